#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace ostrell {

// Text of disk hardware as the device and its driver deliver it. Nothing of it is trusted: no read
// leaves the bytes given, and the result is never longer than they are.

// The text at `offset` of a storage device descriptor. Offset 0, or one past the bytes, is an empty
// text; a text without a terminating zero ends where the bytes end.
//
// A text of hexadecimal digits, in which a blank stands for 0, becomes the bytes that it spells; an
// odd last digit is dropped. This holds only when each of those bytes is zero or printable (0x20 to
// 0x7E); otherwise the text is taken as it stands, or as empty when a character is not printable.
// `swapPairs` then swaps the characters of each pair. The last one of an odd number changes places
// with the terminator, so that it is lost. The result ends at its first zero and has no blanks at
// its ends, save that an all-blank text stays.
std::string DescriptorText(std::span<const std::byte> descriptor, uint32_t offset, bool swapPairs);

// The text in `wordCount` 16-bit words of ATA identify data, which hold two characters each, the
// first in the high byte. Without the blanks at its end, and then up to its first zero. Words past
// the bytes hold nothing.
std::string IdentifyText(std::span<const std::byte> identify, size_t firstWord, size_t wordCount);

}  // namespace ostrell
