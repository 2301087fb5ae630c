#include "base/text.h"

#include <gtest/gtest.h>

namespace ostrell {
namespace {

TEST(Text, TheSixBlanksAndNothingElse) {
  EXPECT_EQ(TrimBlanks(" \t\n\v\f\r5.0 1 \r\n"), "5.0 1");
  EXPECT_EQ(TrimBlanks(" \n\t "), "");
  EXPECT_EQ(TrimBlanks(""), "");
  EXPECT_EQ(TrimBlanks("\xA0x\x1F"), "\xA0x\x1F");
  EXPECT_EQ(TrimTrailingBlanks("  x  "), "  x");
}

TEST(Text, FoldsAsciiLettersOnly) {
  EXPECT_TRUE(StartsWithIgnoringCase("PCI\\VEN_0000", "pci\\"));
  EXPECT_TRUE(StartsWithIgnoringCase("x", ""));
  EXPECT_FALSE(StartsWithIgnoringCase("pci", "pci\\"));
  EXPECT_FALSE(StartsWithIgnoringCase("@x", "`x"));
  EXPECT_FALSE(StartsWithIgnoringCase("\xC4", "\xE4"));
}

// Encoded forms by the table of RFC 3629, 3; a lone surrogate becomes the replacement character.
TEST(Text, Utf8OfEachLengthAndOfLoneSurrogates) {
  EXPECT_EQ(Utf8FromWide(L"\x7F\x80\x7FF"), "\x7F\xC2\x80\xDF\xBF");
  EXPECT_EQ(Utf8FromWide(L"\x800\xFFFF"), "\xE0\xA0\x80\xEF\xBF\xBF");
  EXPECT_EQ(Utf8FromWide(L"\U00010000\U0010FFFF"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
  EXPECT_EQ(Utf8FromWide(std::wstring_view(L"a\0b", 3)), std::string("a\0b", 3));
  for (const int unit : {0xD800, 0xDBFF, 0xDC00, 0xDFFF}) {
    EXPECT_EQ(Utf8FromWide(std::wstring{static_cast<wchar_t>(unit), L'x'}), "\xEF\xBF\xBDx")
        << unit;
  }
}

}  // namespace
}  // namespace ostrell
