#include "reports/record_query.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>

namespace ostrell {
namespace {

const std::string kOrder = R"("o":[{"n":"ts","t":"DESC"}]})";

TEST(RecordQuery, Descriptors) {
  EXPECT_EQ(CompactText(RecordsInRange(1, 2)),
            R"({"c":[{"c":"><","n":"ts","v":{"l":1,"r":2}}],)" + kOrder);
  EXPECT_EQ(CompactText(RecordsInRangeWithNegativeId(-5, 1795565520)),
            R"({"c":[{"c":"><","n":"ts","v":{"l":-5,"r":1795565520}},{"c":"<","n":"fid","v":0}],)" +
                kOrder);
  const std::array<int32_t, 3> ids = {7, -1, std::numeric_limits<int32_t>::min()};
  EXPECT_EQ(CompactText(RecordsInRangeWithIds(0, std::numeric_limits<int64_t>::max(), ids)),
            R"({"c":[{"c":"><","n":"ts","v":{"l":0,"r":9223372036854775807}},)"
            R"({"c":"in","n":"fid","v":[7,-1,-2147483648]}],)" +
                kOrder);
}

TEST(RecordQuery, NoIdsStayACondition) {
  EXPECT_EQ(
      CompactText(RecordsInRangeWithIds(1, 2, {})),
      R"({"c":[{"c":"><","n":"ts","v":{"l":1,"r":2}},{"c":"in","n":"fid","v":[]}],)" + kOrder);
}

}  // namespace
}  // namespace ostrell
