#include "base/text.h"

#include <algorithm>
#include <cstdint>

namespace ostrell {
namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";
constexpr char32_t kReplacement = 0xFFFD;

constexpr bool IsHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool IsLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

// Takes one code point off the front of `text`, which is not empty.
char32_t TakeCodePoint(std::wstring_view& text) {
  const auto unit = static_cast<char32_t>(text.front());
  text.remove_prefix(1);
  if (sizeof(wchar_t) == 2 && IsHighSurrogate(unit) && !text.empty() &&
      IsLowSurrogate(static_cast<char32_t>(text.front()))) {
    const auto low = static_cast<char32_t>(text.front());
    text.remove_prefix(1);
    return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
  }
  const bool sound = unit <= 0x10FFFF && !IsHighSurrogate(unit) && !IsLowSurrogate(unit);
  return sound ? unit : kReplacement;
}

void AppendUtf8(std::string& text, char32_t codePoint) {
  const auto continuation = [&](int shift) {
    text += static_cast<char>(0x80 | ((codePoint >> shift) & 0x3F));
  };
  if (codePoint < 0x80) {
    text += static_cast<char>(codePoint);
  } else if (codePoint < 0x800) {
    text += static_cast<char>(0xC0 | (codePoint >> 6));
    continuation(0);
  } else if (codePoint < 0x10000) {
    text += static_cast<char>(0xE0 | (codePoint >> 12));
    continuation(6);
    continuation(0);
  } else {
    text += static_cast<char>(0xF0 | (codePoint >> 18));
    continuation(12);
    continuation(6);
    continuation(0);
  }
}

void AppendWide(std::wstring& text, char32_t codePoint) {
  if (sizeof(wchar_t) == 2 && codePoint >= 0x10000) {
    text += static_cast<wchar_t>(0xD800 + ((codePoint - 0x10000) >> 10));
    text += static_cast<wchar_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF));
  } else {
    text += static_cast<wchar_t>(codePoint);
  }
}

}  // namespace

bool IsBlank(char character) {
  return kBlanks.find(character) != std::string_view::npos;
}

bool IsBlank(wchar_t character) {
  return static_cast<uint32_t>(character) < 0x80 && IsBlank(static_cast<char>(character));
}

std::string_view TrimTrailingBlanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::string_view TrimBlanks(std::string_view text) {
  text = TrimTrailingBlanks(text);
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text;
}

bool StartsWithIgnoringCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() &&
         std::equal(prefix.begin(), prefix.end(), text.begin(),
                    [](char a, char b) { return LowerAscii(a) == LowerAscii(b); });
}

bool EqualsIgnoringCase(std::string_view text, std::string_view other) {
  return text.size() == other.size() && StartsWithIgnoringCase(text, other);
}

std::string Utf8FromWide(std::wstring_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    AppendUtf8(result, TakeCodePoint(text));
  }
  return result;
}

Utf8Character FirstCharacter(std::string_view text) {
  if (text.empty()) {
    return {Utf8Character::kNone, 0};
  }
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) {
    return {lead, 1};
  }
  const Utf8Character stray = {Utf8Character::kStrayByte + lead, 1};
  const size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) {
    return stray;
  }
  char32_t code = lead & (0x7Fu >> length);
  for (const char next : text.substr(1, length - 1)) {
    if ((next & 0xC0) != 0x80) {
      return stray;
    }
    code = code << 6 | (next & 0x3Fu);
  }
  const bool isSurrogate = IsHighSurrogate(code) || IsLowSurrogate(code);
  const bool isTooLong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  return isSurrogate || isTooLong || code > 0x10FFFF ? stray : Utf8Character{code, length};
}

std::optional<std::wstring> WideFromUtf8(std::string_view text) {
  std::wstring wide;
  wide.reserve(text.size());
  while (!text.empty()) {
    const Utf8Character next = FirstCharacter(text);
    if (next.code >= Utf8Character::kStrayByte) {
      return std::nullopt;
    }
    AppendWide(wide, next.code);
    text.remove_prefix(next.length);
  }
  return wide;
}

}  // namespace ostrell
