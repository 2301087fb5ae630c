#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace ostrell {

// Text of registry values, which hold UTF-16LE by agreement and any bytes in fact. A unit becomes
// one character, whatever it is: surrogates are not paired. The result holds no zero and never more
// characters than there are units.

// The text up to the first zero unit or the end of the bytes. An odd last byte is a unit with a
// high byte of zero; no bytes are an empty text.
std::wstring TextUpToZero(std::span<const std::byte> bytes);

// The text up to the first zero unit; no bytes are an empty text. Nothing when the count of bytes
// is odd or the last unit is not zero.
std::optional<std::wstring> TerminatedText(std::span<const std::byte> bytes);

}  // namespace ostrell
