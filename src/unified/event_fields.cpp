#include "unified/event_fields.h"

#include <algorithm>
#include <array>
#include <optional>

#include "base/find_text.h"
#include "base/text.h"

namespace ostrell {
namespace {

constexpr std::array<std::wstring_view, 2> kProductWords = {L"velmora", L"protsvc"};
constexpr std::wstring_view kNameMarker = L"Data Name='AppName'>";
constexpr std::wstring_view kTimestampMarker = L"Data Name='AppTimeStamp'>";
constexpr std::wstring_view kValueEnd = L"</Data";

// The value behind the first `marker`, which must end; nothing without the marker.
std::optional<std::wstring_view> ElementValue(std::wstring_view data, std::wstring_view marker) {
  const size_t found = FindText(data, marker);
  if (found == std::wstring_view::npos) {
    return std::nullopt;
  }
  const std::wstring_view rest = data.substr(found + marker.size());
  const size_t end = FindText(rest, kValueEnd);
  return end == std::wstring_view::npos ? std::wstring_view() : rest.substr(0, end);
}

ApplicationFields FieldsOfWords(std::wstring_view data) {
  std::array<std::wstring_view, 3> words;
  size_t at = 0;
  for (size_t word = 0; word < words.size(); ++word) {
    const auto isBlank = [](wchar_t c) { return IsBlank(c); };
    const auto begin = std::find_if_not(data.begin() + at, data.end(), isBlank);
    const auto end = std::find_if(begin, data.end(), isBlank);
    if (end == data.end() && word + 1 < words.size()) {
      break;  // no blank ends it
    }
    words[word] = std::wstring_view(begin, end);
    at = static_cast<size_t>(end - data.begin());
  }
  return {std::wstring(words[0]), std::wstring(words[2])};
}

}  // namespace

bool NamesProduct(std::wstring_view data) {
  return std::ranges::any_of(kProductWords, [data](std::wstring_view word) {
    return FindText(data, word, 0, LetterCase::kIgnored) != std::wstring_view::npos;
  });
}

ApplicationFields ExtractApplicationFields(std::wstring_view data) {
  const auto name = ElementValue(data, kNameMarker);
  if (!name) {
    return FieldsOfWords(data);
  }
  return {std::wstring(*name), std::wstring(ElementValue(data, kTimestampMarker).value_or(L""))};
}

}  // namespace ostrell
