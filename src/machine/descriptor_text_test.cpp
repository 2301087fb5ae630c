#include "machine/descriptor_text.h"

#include <gtest/gtest.h>

#include "base/bytes.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

// Two bytes stand before what the hardware gave: the offset, which from 128 on lies far outside, or
// the first word, and the count of words.
TEST(DescriptorText, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("descriptor_text")) {
    const auto plain = recorded.All("plain");
    const auto swapped = recorded.All("swapped");
    const auto identify = recorded.All("identify");
    size_t number = 0;
    for (const std::string& input : recorded.All("input")) {
      SCOPED_TRACE(recorded.Name() + ": " + input);
      const auto bytes = BytesOf(input).subspan(2);
      const uint8_t first = static_cast<uint8_t>(input[0]);
      const uint32_t offset = first < 128 ? first : 0xFFFFFF00 + first;
      if (identify.empty()) {
        EXPECT_EQ(DescriptorText(bytes, offset, false), plain.at(number));
        EXPECT_EQ(DescriptorText(bytes, offset, true), swapped.at(number));
      } else {
        EXPECT_EQ(IdentifyText(bytes, first, static_cast<uint8_t>(input[1])), identify.at(number));
      }
      ++number;
    }
  }
  EXPECT_EQ(DescriptorText(BytesOf("wxyz"), 0x80000000, false), "");
}

}  // namespace
}  // namespace ostrell
