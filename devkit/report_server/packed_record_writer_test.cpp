#include "devkit/report_server/packed_record_writer.h"

#include <gtest/gtest.h>

namespace ostrell {
namespace {

TEST(PackedRecordWriterTest, LengthsHaveTheirBounds) {
  EXPECT_EQ(RecordSizeWord(0x03FFFFFF), 0x03FFFFFFU);
  EXPECT_EQ(RecordSizeWord(0x04000000), 0xC4000000U);
  // The extension is cut where its length byte ends.
  const std::string block = PackRecord("{}", std::string(256, 'x'));
  EXPECT_EQ(block[kRecordExtensionOffset], '\xFF');
  EXPECT_EQ(block.substr(14 + 254), "x{}");
}

}  // namespace
}  // namespace ostrell
