#include "devkit/report_server/packed_record_writer.h"

#include <gtest/gtest.h>

namespace ostrell {
namespace {

using namespace std::string_literals;

TEST(PackedRecordWriterTest, LayoutIsByteForByte) {
  EXPECT_EQ(PackRecord("{}", "ab"), "OPKR\xFF\xFF\x20\x00\x12\x00\x00\x00\x02\x00"s + "ab{}");
  EXPECT_EQ(PackRecord("", ""), "OPKR\xFF\xFF\x20\x00\x0E\x00\x00\x00\x00\x00"s);
}

TEST(PackedRecordWriterTest, SizeWordTakesTheLongFormFrom26Bits) {
  EXPECT_EQ(RecordSizeWord(0x03FFFFFF), 0x03FFFFFFU);
  EXPECT_EQ(RecordSizeWord(0x04000000), 0xC4000000U);
  EXPECT_EQ(RecordSizeWord(0x3FFFFFFF), 0xFFFFFFFFU);
}

TEST(PackedRecordWriterTest, ExtensionIsCutWhereItsLengthByteEnds) {
  const std::string block = PackRecord("{}", std::string(256, 'x'));
  EXPECT_EQ(block.size(), 14U + 255 + 2);
  EXPECT_EQ(block[kRecordExtensionOffset], '\xFF');
  EXPECT_EQ(block.substr(14 + 255), "{}");
}

}  // namespace
}  // namespace ostrell
