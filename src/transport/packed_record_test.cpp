#include "transport/packed_record.h"

#include "base/bytes.h"
#include "tests/support/expect_recorded.h"

namespace ostrell {
namespace {

TEST(PackedRecord, RecordedCases) {
  ExpectRecorded("packed_record", [](const std::string& block, const auto&) {
    return PackedRecordJson(BytesOf(block)).value_or("no record");
  });
}

}  // namespace
}  // namespace ostrell
