#include "env/dotted_number_list.h"

#include <gtest/gtest.h>

#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

TEST(DottedNumberList, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("dotted_number_list")) {
    const auto inputs = recorded.All("input");
    const auto answers = recorded.All("is_list");
    ASSERT_EQ(inputs.size(), answers.size()) << recorded.Name();
    for (size_t i = 0; i < inputs.size(); ++i) {
      EXPECT_EQ(IsDottedNumberList(inputs[i]), answers[i] == "yes")
          << recorded.Name() << ": " << inputs[i];
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
