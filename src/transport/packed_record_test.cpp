#include "transport/packed_record.h"

#include <gtest/gtest.h>

#include "base/bytes.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

// A case without a text is of blocks that are no records.
TEST(PackedRecord, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("packed_record")) {
    for (const std::string& block : recorded.All("input")) {
      const auto text = PackedRecordJson(BytesOf(block));
      EXPECT_EQ(text.has_value(), recorded.Has("json")) << recorded.Name();
      EXPECT_EQ(text.value_or(""), recorded.Has("json") ? recorded["json"] : "") << recorded.Name();
    }
  }
}

}  // namespace
}  // namespace ostrell
