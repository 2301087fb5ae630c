#include "transport/packed_record.h"

#include <cstdint>

#include "base/bytes.h"

namespace ostrell {
namespace {

constexpr uint64_t kSizeWordOffset = 8;
constexpr uint64_t kExtensionLengthOffset = 12;
constexpr uint64_t kExtensionOffset = 14;

constexpr uint32_t kLongLengthMark = 0xC0000000;
constexpr uint32_t kLongLengthMask = 0x3FFFFFFF;
constexpr uint32_t kShortLengthMask = 0x03FFFFFF;

constexpr uint32_t RecordLength(uint32_t sizeWord) {
  const bool isLong = (sizeWord & kLongLengthMark) == kLongLengthMark;
  return sizeWord & (isLong ? kLongLengthMask : kShortLengthMask);
}

}  // namespace

std::optional<std::string_view> PackedRecordJson(std::span<const std::byte> block) {
  const auto sizeWord = ReadLittleEndian<uint32_t>(block, kSizeWordOffset);
  const auto extensionLength = ReadLittleEndian<uint8_t>(block, kExtensionLengthOffset);
  if (!sizeWord || !extensionLength) {
    return std::nullopt;
  }
  const uint32_t length = RecordLength(*sizeWord);
  const uint64_t textOffset = kExtensionOffset + *extensionLength;
  if (length < textOffset) {
    return std::nullopt;
  }
  const auto text = Slice(block, textOffset, length - textOffset);
  return text ? std::optional(TextOf(*text)) : std::nullopt;
}

}  // namespace ostrell
