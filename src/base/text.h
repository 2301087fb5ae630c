#pragma once

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

}  // namespace ostrell
