#include "base/hex.h"

namespace ostrell {

std::string UpperHex(std::span<const std::byte> bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::byte byte : bytes) {
    const auto value = std::to_integer<unsigned>(byte);
    text += kDigits[value >> 4];
    text += kDigits[value & 15];
  }
  return text;
}

int HexDigitValue(char digit) {
  if (digit >= '0' && digit <= '9') {
    return digit - '0';
  }
  if (digit >= 'a' && digit <= 'f') {
    return digit - 'a' + 10;
  }
  if (digit >= 'A' && digit <= 'F') {
    return digit - 'A' + 10;
  }
  return -1;
}

}  // namespace ostrell
