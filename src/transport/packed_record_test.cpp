#include "transport/packed_record.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "base/bytes.h"

namespace ostrell {
namespace {

constexpr size_t kFieldsEnd = 14;

// A block with the fields as given, whatever lies behind them.
std::string Block(uint32_t sizeWord, uint8_t extensionLength, const std::string& rest) {
  std::string block(kFieldsEnd, '\xEE');
  for (size_t i = 0; i < 4; ++i) {
    block[8 + i] = static_cast<char>(sizeWord >> (8 * i));
  }
  block[12] = static_cast<char>(extensionLength);
  return block + rest;
}

TEST(PackedRecord, LengthIsInTheLow26Or30Bits) {
  // Short forms whose higher bits are no length, and the long form.
  for (const uint32_t sizeWord : {0x0000'0010u, 0x8000'0010u, 0x7C00'0010u, 0xC000'0010u}) {
    EXPECT_EQ(PackedRecordJson(BytesOf(Block(sizeWord, 0, "{}"))), "{}") << sizeWord;
  }
}

TEST(PackedRecord, TextBeginsBehindTheExtension) {
  for (const size_t extension : {0, 1, 127, 128, 255}) {
    const auto length = static_cast<uint32_t>(kFieldsEnd + extension + 2);
    const std::string block =
        Block(length, static_cast<uint8_t>(extension), std::string(extension, 'e') + "{}");
    EXPECT_EQ(PackedRecordJson(BytesOf(block)), "{}") << extension;
  }
}

TEST(PackedRecord, TextEndsAtTheLengthNotAtTheBlock) {
  EXPECT_EQ(PackedRecordJson(BytesOf(Block(kFieldsEnd + 2, 0, "{}behind"))), "{}");
  EXPECT_EQ(PackedRecordJson(BytesOf(Block(kFieldsEnd + 2, 2, "{}behind"))), "");
}

TEST(PackedRecord, Damage) {
  const struct {
    const char* name;
    std::string block;
  } kCases[] = {
      {"empty", ""},
      {"ends before the size word", std::string(8, '\0')},
      {"ends inside the size word", Block(16, 0, "").substr(0, 11)},
      {"ends before the extension length", Block(16, 0, "").substr(0, 12)},
      {"ends before the text", Block(13, 0, "").substr(0, 13)},
      {"length one past the block", Block(kFieldsEnd + 3, 0, "{}")},
      {"longest short length", Block(0x03FF'FFFF, 0, "{}")},
      {"long form, length past 26 bits", Block(0xC400'0010, 0, "{}")},
      {"longest long length", Block(0xFFFF'FFFF, 0, "{}")},
      {"length zero", Block(0, 0, "{}")},
      {"long form, length zero", Block(0xC000'0000, 0, "{}")},
      {"length one short of the text", Block(kFieldsEnd - 1, 0, "{}")},
      {"extension one past the length", Block(kFieldsEnd + 2, 3, "{}")},
      {"extension past the block", Block(kFieldsEnd + 2, 255, "{}")},
  };
  for (const auto& testCase : kCases) {
    EXPECT_EQ(PackedRecordJson(BytesOf(testCase.block)), std::nullopt) << testCase.name;
  }
}

}  // namespace
}  // namespace ostrell
