#include "base/calendar.h"

#include <array>
#include <bit>
#include <limits>
#include <sstream>

#include "base/print.h"
#include "tests/support/expect_recorded.h"

namespace ostrell {
namespace {

using Fields = std::array<uint16_t, 8>;

TEST(Calendar, RecordedCases) {
  ExpectRecorded("calendar", [](const std::string& date, const RecordedCase&) {
    Fields fields{};
    std::istringstream stream(date);
    for (uint16_t& field : fields) {
      EXPECT_TRUE(stream >> field) << date;
    }
    const auto utc = std::bit_cast<SystemTime>(fields);
    const auto ticks = TicksFromSystemTime(utc);
    if (ticks) {
      const auto last = SystemTimeFromTicks(*ticks + 9999);
      EXPECT_EQ(std::bit_cast<Fields>(last.value_or(SystemTime{})), fields);
    }
    return Print("%s %lld", ticks ? std::to_string(*ticks) : "none", SecondsSince1970(utc));
  });
}

TEST(Calendar, ConstantsAndEnds) {
  EXPECT_EQ(TicksFromSeconds(1709247600), 133537212000000000u);
  EXPECT_EQ(SystemTimeFromTicks(0x7FFFFFFFFFFFFFFF).value().year, 30828);
  EXPECT_EQ(SystemTimeFromTicks(0x8000000000000000), std::nullopt);
  constexpr int64_t kMin = std::numeric_limits<int64_t>::min();
  EXPECT_EQ(WrappingDifference(5, 7), -2);
  EXPECT_EQ(WrappingDifference(0, kMin), kMin);
  EXPECT_EQ(WrappingDifference(kMin, 1), std::numeric_limits<int64_t>::max());
}

}  // namespace
}  // namespace ostrell
