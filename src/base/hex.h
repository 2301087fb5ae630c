#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace ostrell {

// Two digits a byte, high nibble first, from the alphabet "0123456789ABCDEF".
std::string UpperHex(std::span<const std::byte> bytes);

// The value of a hexadecimal digit of either case; -1 for any other character.
int HexDigitValue(char digit);

}  // namespace ostrell
