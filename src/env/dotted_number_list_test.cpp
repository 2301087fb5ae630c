#include "env/dotted_number_list.h"

#include <gtest/gtest.h>

#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

TEST(DottedNumberList, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("dotted_number_list")) {
    for (const std::string& text : recorded.All("list")) {
      EXPECT_TRUE(IsDottedNumberList(text)) << recorded.Name() << ": " << text;
    }
    for (const std::string& text : recorded.All("other")) {
      EXPECT_FALSE(IsDottedNumberList(text)) << recorded.Name() << ": " << text;
    }
  }
}

TEST(DottedNumberList, DigitRunsOfAnyLength) {
  const std::string zeros(100000, '0');
  EXPECT_TRUE(IsDottedNumberList("1.2.3." + zeros + "4/" + zeros + "8"));
  EXPECT_FALSE(IsDottedNumberList("1.2.3." + std::string(100000, '9')));
}

}  // namespace
}  // namespace ostrell
