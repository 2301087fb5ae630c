#include <algorithm>
#include <span>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "fuzz/fuzz_target.h"
#include "machine/descriptor_text.h"

namespace {

using namespace ostrell;

constexpr std::string_view kBlanks = " \t\n\v\f\r";

std::string UpToZero(std::string_view text) {
  return std::string(text.substr(0, text.find('\0')));
}

bool ArePrintable(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c >= 0x20 && c < 0x7F; });
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
  std::string text;
  for (size_t i = 0; i < decoded.size(); ++i) {
    const size_t from = swapPairs ? i ^ 1 : i;
    text += from < decoded.size() ? decoded[from] : '\0';
  }
  text = UpToZero(text);
  const size_t first = text.find_first_not_of(kBlanks);
  return first == text.npos ? text : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

void CheckIdentify(std::span<const std::byte> identify, size_t firstWord, size_t wordCount) {
  const std::string text = IdentifyText(identify, firstWord, wordCount);
  std::string words;
  for (size_t i = 2 * firstWord; i + 1 < identify.size() && words.size() < 2 * wordCount; i += 2) {
    words += {static_cast<char>(identify[i + 1]), static_cast<char>(identify[i])};
  }
  Require(words.starts_with(text) && text.find('\0') == text.npos);
  // A zero ended the text, or only blanks are left.
  const std::string_view rest = std::string_view(words).substr(text.size());
  Require(rest.starts_with('\0') || rest.find_first_not_of(kBlanks) == rest.npos);
}

}  // namespace

// The first byte is the offset, from 128 on one far outside, and the first word; the second says
// whether pairs are swapped, and is the count of words. The rest are the bytes.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) {
    return 0;
  }
  const auto bytes = std::as_bytes(std::span(data, size)).subspan(2);
  const uint32_t offset = data[0] < 0x80 ? data[0] : 0xFFFFFF00U + data[0];
  const bool swapPairs = data[1] % 2 == 1;
  const std::string text = DescriptorText(bytes, offset, swapPairs);
  Require(text.size() <= bytes.size() && ArePrintable(text));
  Require(text.find_first_not_of(' ') == text.npos || (text.front() != ' ' && text.back() != ' '));
  Require(text == PlainReading(TextOf(bytes), offset, swapPairs));
  CheckIdentify(bytes, data[0], data[1]);
  return 0;
}
