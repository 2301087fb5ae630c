#include "base/text.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "base/bounded_text.h"
#include "base/bytes.h"
#include "base/find_text.h"
#include "base/fold_case.h"
#include "base/print.h"
#include "base/registry_text.h"
#include "base/wildcard.h"
#include "tests/support/expect_recorded.h"

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

// Number and CRC-32 of the pairs of Unicode's file, in order, eight bytes each, little-endian; both
// were computed by another program from the file itself.
TEST(FoldCase, IsTheWholeTable) {
  uint32_t pairs = 0;
  uLong crc = 0;
  for (char32_t from = 0; from <= 0x120000; ++from) {
    const char32_t to = FoldCase(from);
    if (to != from) {
      std::array<Bytef, 8> bytes;
      for (unsigned i = 0; i < 4; ++i) {
        bytes[i] = static_cast<Bytef>(from >> (8 * i));
        bytes[4 + i] = static_cast<Bytef>(to >> (8 * i));
      }
      crc = crc32(crc, bytes.data(), bytes.size());
      ++pairs;
    }
  }
  EXPECT_EQ(pairs, 1454u);
  EXPECT_EQ(crc, 0x6141ae21u);
  EXPECT_EQ(FoldCase(0xFFFFFFFF), char32_t{0xFFFFFFFF});
}

// Of a text and a pattern with a bar between them.
TEST(Wildcard, RecordedCases) {
  ExpectRecorded("wildcard", [](const std::string& both, const RecordedCase&) {
    const size_t bar = both.find('|');
    return MatchesWildcard(both.substr(0, bar), both.substr(bar + 1)) ? "same" : "other";
  });
}

// Trying every split of the text among the runs would not end.
TEST(Wildcard, TenThousandRuns) {
  std::string pattern;
  for (int i = 0; i < 10000; ++i) {
    pattern += "*a";
  }
  EXPECT_TRUE(MatchesWildcard(std::string(10000, 'a'), pattern));
  EXPECT_FALSE(MatchesWildcard(std::string(9999, 'a'), pattern));
  EXPECT_FALSE(MatchesWildcard(std::string(10000, 'a'), pattern + "b"));
  EXPECT_TRUE(MatchesWildcard("x", std::string(10000, '*')));
}

std::string Units(std::wstring_view text) {
  std::string units;
  for (const wchar_t unit : text) {
    units += Print("%x;", static_cast<uint32_t>(unit));
  }
  return units;
}

// Texts of few letters, in which beginnings and ends of what is sought stand everywhere, each in a
// block of its own size: a read outside shows.
TEST(FindText, FindsWhatTheLibraryFinds) {
  std::minstd_rand chance(5);
  for (int round = 0; round < 20000; ++round) {
    std::vector<wchar_t> text(chance() % 60);
    std::ranges::generate(text, [&] { return L"abA\u0161"[chance() % 4]; });
    const std::wstring_view whole(text.data(), text.size());
    const std::wstring wanted(whole.substr(chance() % (whole.size() + 1), chance() % 6));
    const size_t from = chance() % (whole.size() + 3);
    ASSERT_EQ(FindText(whole, wanted, from), whole.find(wanted, from)) << round;

    std::wstring lower(whole);
    std::ranges::transform(lower, lower.begin(), LowerAscii<wchar_t>);
    std::wstring lowerWanted(wanted);
    std::ranges::transform(lowerWanted, lowerWanted.begin(), LowerAscii<wchar_t>);
    ASSERT_EQ(FindText(whole, lowerWanted, from, LetterCase::kIgnored),
              lower.find(lowerWanted, from))
        << round;
  }
}

TEST(RegistryText, RecordedCases) {
  ExpectRecorded("registry_text", [](const std::string& input, const RecordedCase&) {
    const std::wstring text = TextUpToZero(BytesOf(input));
    const auto terminated = TerminatedText(BytesOf(input));
    EXPECT_EQ(terminated.value_or(text), text);
    return (terminated ? "terminated:" : "open:") + Units(text);
  });
}

}  // namespace
}  // namespace ostrell
