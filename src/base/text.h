#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ostrell {

// ASCII only: no locale decides what these functions do.

// Space, tab, line feed, vertical tab, form feed, carriage return.
bool IsBlank(char character);
bool IsBlank(wchar_t character);

template <class Char>
constexpr Char LowerAscii(Char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<Char>(character + ('a' - 'A'))
                                              : character;
}

// `text` without the blanks at its ends; an all-blank text becomes empty.
std::string_view TrimBlanks(std::string_view text);
std::string_view TrimTrailingBlanks(std::string_view text);

// True when `text` begins with `prefix`, or is `other`, ASCII letters compared without regard to
// case.
bool StartsWithIgnoringCase(std::string_view text, std::string_view prefix);
bool EqualsIgnoringCase(std::string_view text, std::string_view other);

// UTF-8 of wide text: UTF-16 where wchar_t has 16 bits, UTF-32 elsewhere. A surrogate without its
// partner, or a number past U+10FFFF, becomes U+FFFD, as WideCharToMultiByte does it.
std::string Utf8FromWide(std::wstring_view text);

// The other way round; nothing for text that is not UTF-8 (RFC 3629), as MultiByteToWideChar
// refuses it with MB_ERR_INVALID_CHARS.
std::optional<std::wstring> WideFromUtf8(std::string_view text);

// A character of UTF-8 text, which need not be sound: a byte that belongs to no character is one of
// its own, past the code points.
struct Utf8Character {
  static constexpr char32_t kStrayByte = 0x110000;  // plus the byte
  static constexpr char32_t kNone = 0x120000;       // behind the last one

  char32_t code;
  size_t length;  // in bytes
};
Utf8Character FirstCharacter(std::string_view text);

}  // namespace ostrell
