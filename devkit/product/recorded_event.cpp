#include "devkit/product/recorded_event.h"

#include <algorithm>

#include "base/calendar.h"
#include "base/text.h"
#include "devkit/product/xml_tokens.h"

namespace ostrell {
namespace {

constexpr std::string_view kDigits = "0123456789";

// Walks the tokens of one event and keeps what its System section says.
class SystemReader {
 public:
  void Read(const XmlToken& token) {
    switch (token.kind) {
      case XmlToken::Kind::kStart:
        path += '/' + token.text;
        ReadStart(token);
        break;
      case XmlToken::Kind::kText:
        ReadText(token.text);
        break;
      case XmlToken::Kind::kEnd:
        path.resize(path.size() - token.text.size() - 1);
        break;
    }
  }

  bool hasSystem = false;
  EventSystem system;

 private:
  void ReadStart(const XmlToken& token) {
    const auto attribute = [&](const char* name) {
      const auto found = token.attributes.find(name);
      return found == token.attributes.end() ? std::nullopt : std::optional(found->second);
    };
    if (path == "/Event/System") {
      hasSystem = true;
    } else if (path == "/Event/System/Provider") {
      system.provider = attribute("Name");
    } else if (path == "/Event/System/TimeCreated") {
      system.timeCreated = TicksFromEventTime(attribute("SystemTime").value_or(""));
    }
  }

  void ReadText(std::string_view text) {
    if (path == "/Event/System/EventID") {
      system.eventId = DecimalNumber(text);
    } else if (path == "/Event/System/Level") {
      system.level = DecimalNumber(text);
    }
  }

  std::string path;
};

std::optional<RecordedEvent> ParseEvent(std::string xml) {
  const auto tokens = XmlTokens(xml);
  if (!tokens) {
    return std::nullopt;
  }
  SystemReader reader;
  for (const XmlToken& token : *tokens) {
    reader.Read(token);
  }
  return reader.hasSystem ? std::optional(RecordedEvent{std::move(xml), std::move(reader.system)})
                          : std::nullopt;
}

std::string_view TakeLine(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(line.size() + 1, text.size()));
  return TrimBlanks(line);
}

uint16_t NumberAt(std::string_view text, size_t offset, size_t length) {
  return static_cast<uint16_t>(DecimalNumber(text.substr(offset, length)).value_or(0));
}

bool HasShape(std::string_view text, std::string_view shape) {
  for (size_t i = 0; i < shape.size(); ++i) {
    const bool isDigit = kDigits.find(text[i]) != std::string_view::npos;
    if (shape[i] == '0' ? !isDigit : text[i] != shape[i]) {
      return false;
    }
  }
  return true;
}

// The ticks of ".123Z" or "Z".
std::optional<uint64_t> FractionTicks(std::string_view text) {
  constexpr size_t kMaxDigits = 9;
  if (text == "Z") {
    return 0;
  }
  if (!text.starts_with('.') || !text.ends_with('Z')) {
    return std::nullopt;
  }
  std::string digits(text.substr(1, text.size() - 2));
  if (digits.empty() || digits.size() > kMaxDigits ||
      digits.find_first_not_of(kDigits) != std::string::npos) {
    return std::nullopt;
  }
  digits.resize(7, '0');
  return DecimalNumber(digits);
}

}  // namespace

std::optional<std::vector<RecordedEvent>> ParseRecordedEvents(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
  text.remove_prefix(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
  std::vector<RecordedEvent> events;
  while (!text.empty()) {
    std::string xml;
    for (auto line = TakeLine(text); !line.empty(); line = TakeLine(text)) {
      xml += line;
    }
    if (xml.empty()) {
      continue;
    }
    auto event = ParseEvent(std::move(xml));
    if (!event) {
      return std::nullopt;
    }
    events.push_back(*std::move(event));
  }
  return events;
}

std::optional<uint64_t> TicksFromEventTime(std::string_view text) {
  constexpr std::string_view kShape = "0000-00-00T00:00:00";
  if (text.size() < kShape.size() || !HasShape(text, kShape)) {
    return std::nullopt;
  }
  SystemTime time{};
  time.year = NumberAt(text, 0, 4);
  time.month = NumberAt(text, 5, 2);
  time.day = NumberAt(text, 8, 2);
  time.hour = NumberAt(text, 11, 2);
  time.minute = NumberAt(text, 14, 2);
  time.second = NumberAt(text, 17, 2);
  const auto whole = TicksFromSystemTime(time);
  const auto fraction = FractionTicks(text.substr(kShape.size()));
  return whole && fraction ? std::optional(*whole + *fraction) : std::nullopt;
}

}  // namespace ostrell
