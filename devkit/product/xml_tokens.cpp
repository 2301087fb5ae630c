#include "devkit/product/xml_tokens.h"

#include <algorithm>
#include <charconv>

#include "base/text.h"
#include "devkit/product/text_cursor.h"

namespace ostrell {
namespace {

template <class Number>
std::optional<Number> WholeNumber(std::string_view digits, int base) {
  Number value = 0;
  const char* end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, value, base);
  return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

// What stands between '&' and ';'.
std::optional<std::string> ReferencedText(std::string_view name) {
  static const std::map<std::string_view, const char*> kNamed = {
      {"lt", "<"}, {"gt", ">"}, {"amp", "&"}, {"apos", "'"}, {"quot", "\""}};
  if (const auto named = kNamed.find(name); named != kNamed.end()) {
    return named->second;
  }
  if (!name.starts_with('#')) {
    return std::nullopt;
  }
  const bool isHex = name.starts_with("#x");
  const auto unit = WholeNumber<uint16_t>(name.substr(isHex ? 2 : 1), isHex ? 16 : 10);
  return unit && *unit != 0 ? std::optional(Utf8FromWide(std::wstring(1, wchar_t{*unit})))
                            : std::nullopt;
}

std::optional<std::string> Decoded(std::string_view text) {
  std::string decoded;
  while (true) {
    const size_t start = text.find('&');
    decoded += text.substr(0, start);
    if (start == std::string_view::npos) {
      return decoded;
    }
    text.remove_prefix(start + 1);
    const size_t end = text.find(';');
    const auto referenced =
        end == std::string_view::npos ? std::nullopt : ReferencedText(text.substr(0, end));
    if (!referenced) {
      return std::nullopt;
    }
    decoded += *referenced;
    text.remove_prefix(end + 1);
  }
}

class XmlReader {
 public:
  explicit XmlReader(std::string_view text) : rest(text) {}

  bool ReadAll() {
    while (!rest.AtEnd()) {
      if (!(rest.Rest().front() == '<' ? ReadTag() : ReadText())) {
        return false;
      }
    }
    return open.empty() && !tokens.empty();
  }

  std::vector<XmlToken> tokens;

 private:
  std::string_view TakeName() {
    constexpr std::string_view kNameCharacters =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-.:";
    return rest.TakeAll(kNameCharacters);
  }

  bool ReadText() {
    const std::string_view raw = rest.TakeUntil("<");
    if (TrimBlanks(raw).empty()) {
      return true;
    }
    auto text = Decoded(raw);
    if (!text || open.empty()) {
      return false;
    }
    tokens.push_back({XmlToken::Kind::kText, *std::move(text)});
    return true;
  }

  bool ReadTag() {
    if (rest.Take("</")) {
      return ReadEnd();
    }
    rest.Take("<");
    const bool isFurtherRoot = open.empty() && !tokens.empty();
    const std::string name(TakeName());
    if (name.empty() || isFurtherRoot) {
      return false;
    }
    XmlToken start{XmlToken::Kind::kStart, name};
    while (true) {
      const bool isApart = rest.TakeBlanks();
      const bool isEmpty = rest.Take("/>");
      if (isEmpty || rest.Take(">")) {
        tokens.push_back(std::move(start));
        isEmpty ? tokens.push_back({XmlToken::Kind::kEnd, name}) : open.push_back(name);
        return true;
      }
      if (!isApart || !ReadAttribute(start)) {
        return false;
      }
    }
  }

  bool ReadEnd() {
    const std::string name(TakeName());
    rest.TakeBlanks();
    if (!rest.Take(">") || open.empty() || open.back() != name) {
      return false;
    }
    open.pop_back();
    tokens.push_back({XmlToken::Kind::kEnd, name});
    return true;
  }

  bool ReadAttribute(XmlToken& start) {
    const std::string name(TakeName());
    if (name.empty() || !rest.Take("=")) {
      return false;
    }
    const std::string_view quote = rest.Rest().substr(0, 1);
    if ((quote != "'" && quote != "\"") || !rest.Take(quote)) {
      return false;
    }
    const std::string_view raw = rest.TakeUntil(quote);
    const auto value = Decoded(raw);
    return value && raw.find('<') == std::string_view::npos && rest.Take(quote) &&
           start.attributes.emplace(name, *value).second;
  }

  TextCursor rest;
  std::vector<std::string> open;
};

bool IsXmlCharacter(char character) {
  return static_cast<unsigned char>(character) >= 0x20 || IsBlank(character);
}

}  // namespace

std::optional<std::vector<XmlToken>> XmlTokens(std::string_view text) {
  XmlReader reader(text);
  const bool isSound = std::all_of(text.begin(), text.end(), IsXmlCharacter) && reader.ReadAll();
  return isSound ? std::optional(std::move(reader.tokens)) : std::nullopt;
}

std::optional<uint64_t> DecimalNumber(std::string_view text) {
  return WholeNumber<uint64_t>(TrimBlanks(text), 10);
}

}  // namespace ostrell
