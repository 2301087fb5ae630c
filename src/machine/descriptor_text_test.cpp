#include "machine/descriptor_text.h"

#include "base/bytes.h"
#include "tests/support/expect_recorded.h"

namespace ostrell {
namespace {

// Two bytes stand before what the hardware gave: the offset, which from 128 on lies far outside, or
// the first word, and the count of words. The text as it stands and swapped, or of identify data.
TEST(DescriptorText, RecordedCases) {
  ExpectRecorded("descriptor_text", [](const std::string& input, const RecordedCase& recorded) {
    const auto bytes = BytesOf(input).subspan(2);
    const uint8_t first = static_cast<uint8_t>(input[0]);
    if (recorded.Name().starts_with("identify")) {
      return "|" + IdentifyText(bytes, first, static_cast<uint8_t>(input[1])) + "|";
    }
    const uint32_t offset = first < 128 ? first : 0xFFFFFF00 + first;
    return "|" + DescriptorText(bytes, offset, false) + "|" + DescriptorText(bytes, offset, true) +
           "|";
  });
  EXPECT_EQ(DescriptorText(BytesOf("wxyz"), 0x80000000, false), "");
}

}  // namespace
}  // namespace ostrell
