#include "base/text.h"

#include <gtest/gtest.h>

namespace ostrell {
namespace {

TEST(TrimBlanks, TheSixBlanksAndNothingElse) {
  EXPECT_EQ(TrimBlanks(" \t\n\v\f\r5.0 1 \r\n"), "5.0 1");
  EXPECT_EQ(TrimBlanks(" \n\t "), "");
  EXPECT_EQ(TrimBlanks(""), "");
  EXPECT_EQ(TrimBlanks("\xA0x\x1F"), "\xA0x\x1F");
  EXPECT_EQ(TrimTrailingBlanks("  x  "), "  x");
}

TEST(StartsWithIgnoringCase, FoldsAsciiLettersOnly) {
  EXPECT_TRUE(StartsWithIgnoringCase("PCI\\VEN_8086", "pci\\"));
  EXPECT_TRUE(StartsWithIgnoringCase("x", ""));
  EXPECT_FALSE(StartsWithIgnoringCase("pci", "pci\\"));
  EXPECT_FALSE(StartsWithIgnoringCase("@x", "`x"));
  EXPECT_FALSE(StartsWithIgnoringCase("\xC4", "\xE4"));
}

// Encoded forms by the table of RFC 3629, 3.
TEST(Utf8FromWide, EveryLengthOfSequence) {
  EXPECT_EQ(Utf8FromWide(L""), "");
  EXPECT_EQ(Utf8FromWide(L"rpttm_ui"), "rpttm_ui");
  EXPECT_EQ(Utf8FromWide(L"\x7F\x80\x7FF"), "\x7F\xC2\x80\xDF\xBF");
  EXPECT_EQ(Utf8FromWide(L"\x800\xFFFF"), "\xE0\xA0\x80\xEF\xBF\xBF");
  EXPECT_EQ(Utf8FromWide(L"\U00010000\U0010FFFF"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
  EXPECT_EQ(Utf8FromWide(std::wstring_view(L"a\0b", 3)), std::string("a\0b", 3));
}

TEST(Utf8FromWide, LoneSurrogatesBecomeTheReplacementCharacter) {
  const wchar_t high = 0xD800;
  const wchar_t low = 0xDC00;
  EXPECT_EQ(Utf8FromWide(std::wstring{high}), "\xEF\xBF\xBD");
  EXPECT_EQ(Utf8FromWide(std::wstring{low, L'x'}), "\xEF\xBF\xBDx");
  EXPECT_EQ(Utf8FromWide(std::wstring{high, L'x'}), "\xEF\xBF\xBDx");
}

}  // namespace
}  // namespace ostrell
