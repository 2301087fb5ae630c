#include "base/registry_text.h"

#include <gtest/gtest.h>

#include "base/bytes.h"
#include "base/print.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

std::string Units(std::wstring_view text) {
  std::string units;
  for (const wchar_t unit : text) {
    units += Print("%x;", static_cast<uint32_t>(unit));
  }
  return units;
}

TEST(RegistryText, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("registry_text")) {
    const auto units = recorded.All("units");
    for (size_t i = 0; const std::string& input : recorded.All("input")) {
      SCOPED_TRACE(recorded.Name() + ": " + testing::PrintToString(input));
      EXPECT_EQ(Units(TextUpToZero(BytesOf(input))), units.at(i));
      const auto terminated = TerminatedText(BytesOf(input));
      ASSERT_EQ(terminated.has_value(), recorded.Number("terminated") != 0);
      EXPECT_EQ(Units(terminated.value_or(L"")), terminated ? units[i] : "");
      ++i;
    }
  }
}

}  // namespace
}  // namespace ostrell
