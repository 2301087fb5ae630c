#include "machine/descriptor_text.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "base/bytes.h"
#include "base/hex.h"
#include "base/text.h"

namespace ostrell {
namespace {

bool IsPrintable(char character) {
  return character >= ' ' && character <= '~';
}

std::string_view UpToZero(std::string_view text) {
  return text.substr(0, text.find('\0'));
}

std::optional<std::string> DecodeHex(std::string_view text) {
  std::string bytes;
  int high = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const int digit = IsBlank(text[i]) ? 0 : HexDigitValue(text[i]);
    if (digit < 0) {
      return std::nullopt;
    }
    if (i % 2 == 0) {
      high = digit;
      continue;
    }
    const auto byte = static_cast<char>(high << 4 | digit);
    if (byte != '\0' && !IsPrintable(byte)) {
      return std::nullopt;
    }
    bytes += byte;
  }
  return bytes;
}

std::string PrintableOrEmpty(std::string_view text) {
  return std::string(std::all_of(text.begin(), text.end(), IsPrintable) ? text : "");
}

void SwapPairs(std::string& text) {
  if (text.size() % 2 != 0) {
    text += '\0';
  }
  for (size_t i = 0; i < text.size(); i += 2) {
    std::swap(text[i], text[i + 1]);
  }
}

}  // namespace

std::string DescriptorText(std::span<const std::byte> descriptor, uint32_t offset, bool swapPairs) {
  if (offset == 0 || offset >= descriptor.size()) {
    return {};
  }
  const std::string_view stored = UpToZero(TextOf(descriptor.subspan(offset)));
  std::optional<std::string> decoded = DecodeHex(stored);
  std::string text = decoded ? *std::move(decoded) : PrintableOrEmpty(stored);
  if (swapPairs) {
    SwapPairs(text);
  }
  const std::string_view whole = UpToZero(text);
  const std::string_view trimmed = TrimBlanks(whole);
  return std::string(trimmed.empty() ? whole : trimmed);
}

std::string IdentifyText(std::span<const std::byte> identify, size_t firstWord, size_t wordCount) {
  std::string text;
  for (size_t word = firstWord; word < firstWord + wordCount; ++word) {
    if (const auto pair = ReadLittleEndian<uint16_t>(identify, 2 * word)) {
      text += static_cast<char>(*pair >> 8);
      text += static_cast<char>(*pair & 0xFF);
    }
  }
  return std::string(UpToZero(TrimTrailingBlanks(text)));
}

}  // namespace ostrell
