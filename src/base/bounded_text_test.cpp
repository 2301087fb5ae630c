#include "base/bounded_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace ostrell {
namespace {

TEST(BoundedText, CutsToSizeLessOneAndTerminates) {
  using Text = BoundedText<char, 8>;
  EXPECT_EQ(Text("1234567").View(), "1234567");
  const Text cut = Text::Print("%s-%d", "12345", 6789);
  EXPECT_EQ(cut.View(), "12345-6");
  EXPECT_EQ(std::strlen(cut.CStr()), 7u);
  EXPECT_TRUE(Text().IsEmpty());
  EXPECT_EQ((BoundedText<char, 1>("x").View()), "");
}

TEST(BoundedText, AppendStopsAtTheEnd) {
  BoundedText<wchar_t, 4> text(L"ab");
  text.Append(L"cd");
  text.Append(L"e");
  EXPECT_EQ(text.View(), L"abc");
  EXPECT_EQ(text.CStr()[3], L'\0');
}

// What URLs need of printf: 64-bit numbers, and 32-bit ones printed by sign.
TEST(BoundedText, PrintsNumbersAsPrintfDoes) {
  using Text = BoundedText<char, 64>;
  EXPECT_EQ(Text::Print("%llu", std::numeric_limits<uint64_t>::max()).View(),
            "18446744073709551615");
  EXPECT_EQ(Text::Print("%lld", std::numeric_limits<int64_t>::min()).View(),
            "-9223372036854775808");
  EXPECT_EQ(Text::Print("%u", std::numeric_limits<uint32_t>::max()).View(), "4294967295");
  EXPECT_EQ(Text::Print("%d", -1).View(), "-1");
  EXPECT_EQ((BoundedText<wchar_t, 64>::Print(L"%s:%lld", L"w", int64_t{-5}).View()), L"w:-5");
}

}  // namespace
}  // namespace ostrell
