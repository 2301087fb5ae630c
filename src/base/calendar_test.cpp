#include "base/calendar.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <limits>
#include <sstream>

#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

using Fields = std::array<uint16_t, 8>;

Fields FieldsOf(const std::string& text) {
  Fields fields{};
  std::istringstream stream(text);
  for (uint16_t& field : fields) {
    EXPECT_TRUE(stream >> field) << text;
  }
  return fields;
}

TEST(Calendar, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("calendar")) {
    const auto ticks = recorded.All("ticks");
    const auto seconds = recorded.All("seconds");
    for (size_t i = 0; const std::string& date : recorded.All("date")) {
      const auto utc = std::bit_cast<SystemTime>(FieldsOf(date));
      const uint64_t first = std::stoull(ticks.at(i));
      EXPECT_EQ(TicksFromSystemTime(utc), first) << date;
      EXPECT_EQ(SecondsSince1970(utc), std::stoll(seconds.at(i++))) << date;
      const auto last = SystemTimeFromTicks(first + 9999);
      EXPECT_EQ(std::bit_cast<Fields>(last.value_or(SystemTime{})), FieldsOf(date));
    }
    for (const std::string& date : recorded.All("no_date")) {
      EXPECT_EQ(SecondsSince1970(std::bit_cast<SystemTime>(FieldsOf(date))), -1) << date;
    }
  }
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
