#include "eventlog/render_record.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <stdexcept>
#include <vector>

#include "base/text.h"

namespace eventlog {
namespace {

constexpr uint32_t kRenderXml = 1;
constexpr uint32_t kMaxBytes = uint32_t{16} << 20;

// The text from `begin` up to the next `end`; nothing when that is empty or has no end.
std::optional<std::wstring> ValueUpTo(std::wstring_view xml, size_t begin, std::wstring_view end) {
  const size_t found = xml.find(end, begin);
  return found == std::wstring_view::npos || found == begin
             ? std::nullopt
             : std::optional(std::wstring(xml.substr(begin, found - begin)));
}

// Of <name ...>value</name.
std::optional<std::wstring> ElementValue(std::wstring_view xml, const std::wstring& name) {
  const size_t found = xml.find(name);
  const size_t tagEnd = found == std::wstring_view::npos ? found : xml.find(L'>', found);
  return tagEnd == std::wstring_view::npos ? std::nullopt
                                           : ValueUpTo(xml, tagEnd + 1, L"</" + name);
}

// Of the text behind `opening`, up to `end`.
std::optional<std::wstring> ValueBehind(std::wstring_view xml, std::wstring_view opening,
                                        std::wstring_view end) {
  const size_t found = xml.find(opening);
  return found == std::wstring_view::npos ? std::nullopt
                                          : ValueUpTo(xml, found + opening.size(), end);
}

std::wstring_view TrimLeadingBlanks(std::wstring_view text) {
  while (!text.empty() && ostrell::IsBlank(text.front())) {
    text.remove_prefix(1);
  }
  return text;
}

// As the conversion to 32 bits does it, where long has more.
uint32_t ToUnsigned32(const std::wstring& text) {
  const uint64_t value = std::stoull(text);
  const bool isNegative = TrimLeadingBlanks(text).starts_with(L'-');
  if ((isNegative ? 0 - value : value) > std::numeric_limits<uint32_t>::max()) {
    throw std::out_of_range("stoul argument out of range");
  }
  return static_cast<uint32_t>(value);
}

uint32_t ToLevel(const std::wstring& text) {
  const int level = std::stoi(text);
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

bool EventRecordFromXml(std::wstring_view xml, EventRecord& record) {
  if (xml.empty()) {
    return false;
  }
  if (const auto value = ElementValue(xml, L"EventID")) {
    record.eventId = ToUnsigned32(*value);
  }
  if (const auto value = ElementValue(xml, L"Level")) {
    record.level = ToLevel(*value);
  }
  if (const auto value = ElementValue(xml, L"ProcessID")) {
    record.processId = std::stoull(*value);
  }
  if (const auto value = ElementValue(xml, L"ThreadID")) {
    record.threadId = std::stoull(*value);
  }
  record.provider = ValueBehind(xml, L"Provider Name='", L"'").value_or(record.provider);
  if (const auto value = ValueBehind(xml, L"TimeCreated SystemTime='", L"'")) {
    record.timeCreated = ReadTime(*value);
  }
  record.computer = ValueBehind(xml, L"<Computer>", L"</Computer>").value_or(record.computer);
  record.data = xml;
  return true;
}

std::wstring RenderEventXml(void* context, void* event, const EvtApi& api) {
  uint32_t bytes = 0;
  uint32_t properties = 0;
  api.render(context, event, kRenderXml, 0, nullptr, &bytes, &properties);
  if (bytes == 0 || bytes > kMaxBytes) {
    return {};
  }
  std::vector<wchar_t> buffer(bytes);
  uint32_t used = 0;
  if (!api.render(context, event, kRenderXml, 2 * bytes, buffer.data(), &used, &properties)) {
    return {};
  }
  return {buffer.begin(), std::ranges::find(buffer, L'\0')};
}

bool RenderEventRecord(void* session, void* event, EventRecord& record, const EvtApi& api) {
  return EventRecordFromXml(RenderEventXml(session, event, api), record);
}

}  // namespace eventlog
