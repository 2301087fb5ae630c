#include <algorithm>
#include <string>

#include "base/bytes.h"
#include "fuzz/fuzz_target.h"
#include "machine/descriptor_text.h"

namespace ostrell {
namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

std::string UpToZero(std::string_view text) {
  return std::string(text.substr(0, text.find('\0')));
}

bool ArePrintable(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c >= 0x20 && c < 0x7F; });
}

// The characters in pairs, the two of each in the other order.
std::string Swapped(std::string_view text) {
  std::string swapped(text.size() + text.size() % 2, '\0');
  for (size_t i = 0; i < text.size(); ++i) {
    swapped[i ^ 1] = text[i];
  }
  return swapped;
}

// The bytes that the digits spell, or what was stored when they are none or not printable.
std::string PlainlyDecoded(const std::string& stored) {
  std::string digits = stored;
  std::ranges::replace_if(
      digits, [](char c) { return kBlanks.find(c) != kBlanks.npos; }, '0');
  std::string bytes;
  if (digits.find_first_not_of("0123456789abcdefABCDEF") == digits.npos) {
    for (size_t i = 0; i + 1 < digits.size(); i += 2) {
      bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    std::string characters = bytes;
    std::erase(characters, '\0');
    if (ArePrintable(characters)) {
      return bytes;
    }
  }
  return ArePrintable(stored) ? stored : "";
}

std::string PlainReading(std::string_view descriptor, uint32_t offset, bool swapPairs) {
  if (offset == 0 || offset >= descriptor.size()) {
    return "";
  }
  const std::string decoded = PlainlyDecoded(UpToZero(descriptor.substr(offset)));
  const std::string text = UpToZero(swapPairs ? Swapped(decoded) : decoded);
  const size_t first = text.find_first_not_of(kBlanks);
  return first == text.npos ? text : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

void CheckIdentify(std::string_view identify, size_t firstWord, size_t wordCount) {
  const std::string text = IdentifyText(BytesOf(identify), firstWord, wordCount);
  const size_t begin = std::min(2 * firstWord, identify.size());
  const size_t length = std::min(2 * wordCount, identify.size() - begin) / 2 * 2;
  const std::string words = Swapped(identify.substr(begin, length));
  Require(words.starts_with(text) && text.find('\0') == text.npos);
  // A zero ended the text, or only blanks are left.
  const std::string_view rest = std::string_view(words).substr(text.size());
  Require(rest.starts_with('\0') || rest.find_first_not_of(kBlanks) == rest.npos);
}

}  // namespace

// The first byte is the offset, from 128 on one far outside, and the first word; the second says
// whether pairs are swapped, and is the count of words. The rest are the bytes.
void CheckInput(std::string_view input) {
  const uint8_t first = TakeByte(input);
  const uint8_t second = TakeByte(input);
  const uint32_t offset = first < 0x80 ? first : 0xFFFFFF00U + first;
  const bool swapPairs = second % 2 == 1;
  const std::string text = DescriptorText(BytesOf(input), offset, swapPairs);
  Require(text.size() <= input.size() && ArePrintable(text));
  Require(text == PlainReading(input, offset, swapPairs));
  CheckIdentify(input, first, second);
}

}  // namespace ostrell
