#include "eventlog/render_record.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "base/find_text.h"
#include "base/text.h"

namespace eventlog {
namespace {

constexpr uint32_t kRenderXml = 1;
constexpr uint32_t kMaxBytes = uint32_t{16} << 20;

// The text from `begin` up to the next `end`; nothing when that is empty or has no end.
std::optional<std::wstring_view> ValueUpTo(std::wstring_view xml, size_t begin,
                                           std::wstring_view end) {
  const size_t found = ostrell::FindText(xml, end, begin);
  return found == std::wstring_view::npos || found == begin
             ? std::nullopt
             : std::optional(xml.substr(begin, found - begin));
}

// Of <name ...>value</name, by the beginning of its closing tag.
std::optional<std::wstring_view> ElementValue(std::wstring_view xml, std::wstring_view closing) {
  constexpr std::wstring_view kTagStart = L"</";
  const size_t found = ostrell::FindText(xml, closing.substr(kTagStart.size()));
  const size_t tagEnd = found == std::wstring_view::npos ? found : xml.find(L'>', found);
  return tagEnd == std::wstring_view::npos ? std::nullopt : ValueUpTo(xml, tagEnd + 1, closing);
}

// Of the text behind `opening`, up to `end`.
std::optional<std::wstring_view> ValueBehind(std::wstring_view xml, std::wstring_view opening,
                                             std::wstring_view end) {
  const size_t found = ostrell::FindText(xml, opening);
  return found == std::wstring_view::npos ? std::nullopt
                                          : ValueUpTo(xml, found + opening.size(), end);
}

std::wstring_view TrimLeadingBlanks(std::wstring_view text) {
  while (!text.empty() && ostrell::IsBlank(text.front())) {
    text.remove_prefix(1);
  }
  return text;
}

// What the service writes, read without the locale: digits and nothing else, of which 32 bits hold
// any nine.
std::optional<uint32_t> PlainNumber(std::wstring_view text) {
  const auto isDigit = [](wchar_t c) { return c >= L'0' && c <= L'9'; };
  if (text.empty() || text.size() > 9 || !std::ranges::all_of(text, isDigit)) {
    return std::nullopt;
  }
  uint32_t value = 0;
  for (const wchar_t digit : text) {
    value = value * 10 + static_cast<uint32_t>(digit - L'0');
  }
  return value;
}

uint64_t ToUnsigned64(std::wstring_view text) {
  const auto plain = PlainNumber(text);
  return plain ? *plain : std::stoull(std::wstring(text));
}

// As the conversion to 32 bits does it, where long has more.
uint32_t ToUnsigned32(std::wstring_view text) {
  const uint64_t value = ToUnsigned64(text);
  const bool isNegative = TrimLeadingBlanks(text).starts_with(L'-');
  if ((isNegative ? 0 - value : value) > std::numeric_limits<uint32_t>::max()) {
    throw std::out_of_range("stoul argument out of range");
  }
  return static_cast<uint32_t>(value);
}

uint32_t ToLevel(std::wstring_view text) {
  const auto plain = PlainNumber(text);
  const int level = plain ? static_cast<int>(*plain) : std::stoi(std::wstring(text));
  return level >= 1 && level <= 5 ? static_cast<uint32_t>(level) : 0;
}

// Takes an integer off the front, by the rules of scanf's "%d" and modulo 2^16.
std::optional<uint16_t> TakeNumber(std::wstring_view& text) {
  text = TrimLeadingBlanks(text);
  const bool isNegative = text.starts_with(L'-');
  if (isNegative || text.starts_with(L'+')) {
    text.remove_prefix(1);
  }
  uint32_t value = 0;
  const size_t before = text.size();
  for (; !text.empty() && text.front() >= L'0' && text.front() <= L'9'; text.remove_prefix(1)) {
    value = value * 10 + static_cast<uint32_t>(text.front() - L'0');
  }
  return text.size() == before
             ? std::nullopt
             : std::optional(static_cast<uint16_t>(isNegative ? 0 - value : value));
}

// Reads "%d-%d-%dT%d:%d:%d"; the fields behind a mismatch stay 0.
ostrell::SystemTime ReadTime(std::wstring_view text) {
  ostrell::SystemTime time{};
  uint16_t* const fields[] = {&time.year, &time.month,  &time.day,
                              &time.hour, &time.minute, &time.second};
  constexpr std::wstring_view kSeparators = L"--T::";
  for (size_t i = 0; i < std::size(fields); ++i) {
    const auto value = TakeNumber(text);
    if (!value) {
      break;
    }
    *fields[i] = *value;
    if (i == kSeparators.size() || !text.starts_with(kSeparators[i])) {
      break;
    }
    text.remove_prefix(1);
  }
  return time;
}

}  // namespace

bool EventRecordFromXml(std::wstring xml, EventRecord& record) {
  if (xml.empty()) {
    return false;
  }
  if (const auto value = ElementValue(xml, L"</EventID")) {
    record.eventId = ToUnsigned32(*value);
  }
  if (const auto value = ElementValue(xml, L"</Level")) {
    record.level = ToLevel(*value);
  }
  if (const auto value = ElementValue(xml, L"</ProcessID")) {
    record.processId = ToUnsigned64(*value);
  }
  if (const auto value = ElementValue(xml, L"</ThreadID")) {
    record.threadId = ToUnsigned64(*value);
  }
  record.provider = ValueBehind(xml, L"Provider Name='", L"'").value_or(record.provider);
  if (const auto value = ValueBehind(xml, L"TimeCreated SystemTime='", L"'")) {
    record.timeCreated = ReadTime(*value);
  }
  record.computer = ValueBehind(xml, L"<Computer>", L"</Computer>").value_or(record.computer);
  record.data = std::move(xml);
  return true;
}

std::wstring RenderEventXml(void* context, void* event, const EvtApi& api) {
  uint32_t bytes = 0;
  uint32_t properties = 0;
  api.render(context, event, kRenderXml, 0, nullptr, &bytes, &properties);
  if (bytes == 0 || bytes > kMaxBytes) {
    return {};
  }
  std::wstring xml(bytes, L'\0');
  uint32_t used = 0;
  if (!api.render(context, event, kRenderXml, 2 * bytes, xml.data(), &used, &properties)) {
    return {};
  }
  xml.resize(std::min(xml.find(L'\0'), xml.size()));
  return xml;
}

bool RenderEventRecord(void* session, void* event, EventRecord& record, const EvtApi& api) {
  return EventRecordFromXml(RenderEventXml(session, event, api), record);
}

}  // namespace eventlog
