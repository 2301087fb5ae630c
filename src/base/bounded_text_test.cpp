#include "base/bounded_text.h"

#include <gtest/gtest.h>

#include <limits>

namespace ostrell {
namespace {

TEST(BoundedText, CutsToSizeLessOneAndTerminates) {
  using Text = BoundedText<char, 8>;
  EXPECT_EQ(Text("1234567").View(), "1234567");
  EXPECT_STREQ(Text::Print("%s-%d", "12345", 6789).CStr(), "12345-6");
  EXPECT_TRUE(Text().IsEmpty());
  EXPECT_EQ((BoundedText<char, 1>("x").View()), "");
  BoundedText<wchar_t, 4> text(L"ab");
  text.Append(L"cd");
  text.Append(L"e");
  EXPECT_STREQ(text.CStr(), L"abc");
}

// What URLs need of printf: 64-bit numbers, and 32-bit ones printed by sign.
TEST(BoundedText, PrintsNumbersAsPrintfDoes) {
  const auto text = BoundedText<char, 64>::Print(
      "%llu %lld %u %d", std::numeric_limits<uint64_t>::max(), std::numeric_limits<int64_t>::min(),
      std::numeric_limits<uint32_t>::max(), -1);
  EXPECT_EQ(text.View(), "18446744073709551615 -9223372036854775808 4294967295 -1");
  EXPECT_EQ((BoundedText<wchar_t, 64>::Print(L"%s:%lld", L"w", int64_t{-5}).View()), L"w:-5");
}

}  // namespace
}  // namespace ostrell
