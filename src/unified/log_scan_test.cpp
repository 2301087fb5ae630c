#include "unified/log_scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/plain_log_reading.h"

namespace ostrell {
namespace {

using namespace std::string_literals;
using Lines = std::vector<std::string>;

const size_t kBlockSizes[] = {1, 2, 3, 7, 16, 64, 65, LogScanSizes().block};

Lines Texts(const std::vector<LogLine>& lines) {
  Lines texts;
  for (const LogLine& line : lines) {
    EXPECT_FALSE(line.isCut);
    texts.push_back(line.text);
  }
  return texts;
}

struct LogCase {
  std::string signature;
  std::string file;
  Lines lines;
};

const std::string kLongText(300, '.');

const std::vector<LogCase> kLogCases = {
    {"ab", "", {}},
    {"ab", "a", {}},
    {"ab", "\n\n", {}},
    {"", "ab\n", {}},
    {"b", "a\nb\nB\nc", {"b", "B"}},
    {"ab", "ab", {"ab"}},
    {"ab", "xab\nba\nabx\n", {"xab", "abx"}},
    {"ab", "AB\naB\nAb\n", {"AB", "aB", "Ab"}},
    {"ab", "a\nb\na b\naab\naaab", {"aab", "aaab"}},
    {"abab", "abaabab abab\nabab", {"abaabab abab", "abab"}},
    // One report a line, however often it matches.
    {"ab", "ab ab ab\nabab\n\nab", {"ab ab ab", "abab", "ab"}},
    // Only ASCII letters fold, and only to the other case.
    {"0 failed",
     "10 FAILED\n0 Failed\n\x10 failed\n0\0failed\n0 fai\xCC"
     "ed"s,
     {"10 FAILED", "0 Failed"}},
    {"@[`{", "`{@[\n@{`{\n@[`[\n@[`{", {"@[`{"}},
    {"startservice:: 0x00000005",
     "[2025] StartService:: 0X00000005.\nStartService:: 0x00000006\nStartService: 0x00000005\n",
     {"[2025] StartService:: 0X00000005."}},
    // Line ends.
    {"ab", "ab\r\nxab\r\n", {"ab", "xab"}},
    {"ab", "ab\r\r\nab\rx\n\rab\r\n", {"ab\r", "ab\rx", "\rab"}},
    {"ab", "x\r\nab\r", {"ab\r"}},
    {"ab", "a\rb\na\r\nb\n\rab", {"\rab"}},
    // The end-of-file byte.
    {"ab", "xab\x1Ayab\nab\n", {"xab"}},
    {"ab", "xab yz\x1A\nab\n", {"xab yz"}},
    {"ab", "ab\nx\x1A ab\nab\n", {"ab"}},
    {"ab",
     "a\x1A"
     "b\nab\n",
     {}},
    {"ab",
     "\x1A"
     "ab\n",
     {}},
    {"ab",
     "ab\n\x1A"
     "ab\n",
     {"ab"}},
    {"ab", "ab\r\x1A\n", {"ab\r"}},
    {"ab", "ab\x1A", {"ab"}},
    // NUL, byte-order mark, bytes past ASCII.
    {"ab",
     "x\0ab\0y\n\0\0\n"s + std::string(200, '\0') + "ab",
     {"x\0ab\0y"s, std::string(200, '\0') + "ab"}},
    {"ab",
     "\xEF\xBB\xBF"
     "ab\n\x80\xFF"
     "ab\xE1\n",
     {"\xEF\xBB\xBF"
      "ab",
      "\x80\xFF"
      "ab\xE1"}},
    // Lines longer than a block.
    {"ab", "ab" + kLongText + "\nab", {"ab" + kLongText, "ab"}},
    {"ab", "x\n" + kLongText + "ab\r\n" + kLongText + "\nab", {kLongText + "ab", "ab"}},
    {"ab", kLongText + "AB" + kLongText, {kLongText + "AB" + kLongText}},
    {"ab", kLongText + "ab\x1A" + kLongText, {kLongText + "ab"}},
    {"ab",
     "x\r\n" + kLongText +
         "\x1A"
         "ab",
     {}},
    {kLongText,
     "x\ny" + kLongText + "z\n." + kLongText.substr(1) + "\n.\n",
     {"y" + kLongText + "z", kLongText}},
};

TEST(LogScanTest, FindsTheLinesThatATextStreamWouldGive) {
  for (const LogCase& row : kLogCases) {
    const LogReader read = [&row](uint64_t offset, std::span<char> to) {
      return ReadFromText(row.file, offset, to);
    };
    for (const size_t blockSize : kBlockSizes) {
      EXPECT_EQ(Texts(MatchingLines(read, row.signature, {.block = blockSize})), row.lines)
          << row.file << " in blocks of " << blockSize;
    }
  }
}

TEST(LogScanTest, PlainReadingAgrees) {
  for (const LogCase& row : kLogCases) {
    if (!row.signature.empty()) {
      EXPECT_EQ(Texts(PlainLogReading(row.file, row.signature, row.file.size())), row.lines)
          << row.file;
    }
  }
}

TEST(LogScanTest, OfALongLineTheBeginningIsKept) {
  for (const LogCase& row : kLogCases) {
    if (row.signature.empty()) {
      continue;
    }
    const LogReader read = [&row](uint64_t offset, std::span<char> to) {
      return ReadFromText(row.file, offset, to);
    };
    for (const size_t most : {1, 2, 3, 8, 65, 300, 301, 302}) {
      const auto expected = PlainLogReading(row.file, row.signature, most);
      for (const size_t blockSize : kBlockSizes) {
        EXPECT_EQ(MatchingLines(read, row.signature, {blockSize, most}), expected)
            << row.file << " in blocks of " << blockSize << ", " << most << " kept";
      }
    }
  }
}

// Of a line of 100 MiB with the match at its end, the part in between is read once.
TEST(LogScanTest, MatchMayStandFarBehindWhatIsKept) {
  constexpr uint64_t kLine = uint64_t{100} << 20;
  constexpr size_t kKept = size_t{16} << 20;
  const std::string tail = "0 failed\n[0 failed";
  uint64_t bytesRead = 0;
  const LogReader read = [&](uint64_t offset, std::span<char> to) {
    const uint64_t rest = kLine + tail.size() - offset;
    to = to.first(static_cast<size_t>(std::min<uint64_t>(to.size(), rest)));
    std::ranges::fill(to, '.');
    for (size_t i = 0; i < tail.size(); ++i) {
      if (kLine + i >= offset && kLine + i - offset < to.size()) {
        to[static_cast<size_t>(kLine + i - offset)] = tail[i];
      }
    }
    bytesRead += to.size();
    return to.size();
  };
  const auto lines = MatchingLines(read, "0 failed", {});
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].text.size(), kKept);
  EXPECT_TRUE(lines[0].isCut);
  EXPECT_EQ(lines[1], (LogLine{"[0 failed", false}));
  EXPECT_LE(bytesRead, kLine + kKept + 4 * LogScanSizes().block);
}

// The end of a line and of the file in every place relative to vectors and blocks.
TEST(LogScanTest, SignatureIsFoundInEveryPlace) {
  for (size_t before = 0; before < 200; ++before) {
    const std::string line = std::string(before, 'a') + "0 failed";
    const std::string file = "x\n" + line + "\n0 faile\n\x1A\n0 failed";
    const LogReader read = [&file](uint64_t offset, std::span<char> to) {
      return ReadFromText(file, offset, to);
    };
    for (const size_t blockSize : kBlockSizes) {
      EXPECT_EQ(Texts(MatchingLines(read, "0 failed", {.block = blockSize})), Lines{line})
          << before << " in blocks of " << blockSize;
    }
  }
}

TEST(LogScanTest, ReaderMayGiveLessThanAskedFor) {
  const std::string file = "x\n0 failed 0 failed\ny 0 failed\r\n";
  const LogReader read = [&file](uint64_t offset, std::span<char> to) {
    return ReadFromText(file, offset, to.first(std::min<size_t>(to.size(), 1 + offset % 3)));
  };
  EXPECT_EQ(Texts(MatchingLines(read, "0 failed", {})), (Lines{"0 failed 0 failed", "y 0 failed"}));
}

TEST(LogScanTest, EachByteOfALongFileIsReadOnce) {
  std::string file;
  for (int i = 0; i < 1000; ++i) {
    file += "0 failed\n";
  }
  size_t bytesRead = 0;
  const LogReader read = [&](uint64_t offset, std::span<char> to) {
    const size_t count = ReadFromText(file, offset, to);
    bytesRead += count;
    return count;
  };
  EXPECT_EQ(MatchingLines(read, "0 failed", {}).size(), 1000U);
  EXPECT_EQ(bytesRead, file.size());
}

// The file becomes `then` between the first reading of a line that began in an earlier block and
// the second one.
Lines LinesOfAChangingLog(const std::string& first, const std::string& then) {
  uint64_t reached = 0;
  bool changed = false;
  const LogReader read = [&](uint64_t offset, std::span<char> to) {
    changed = changed || offset < reached;
    reached = offset;
    return ReadFromText(changed ? then : first, offset, to);
  };
  return Texts(MatchingLines(read, "ab", {.block = 4}));
}

TEST(LogScanTest, LineThatChangedBetweenTwoReadingsCountsAsItIsThen) {
  const std::string first = "x\n12345678ab\nab\n";
  EXPECT_EQ(LinesOfAChangingLog(first, first), (Lines{"12345678ab", "ab"}));
  EXPECT_EQ(LinesOfAChangingLog(first, ""), Lines{});
  EXPECT_EQ(LinesOfAChangingLog(first, "x\n"), Lines{});
  EXPECT_EQ(LinesOfAChangingLog(first, "x\n12345678a"), Lines{});
  EXPECT_EQ(LinesOfAChangingLog(first, "x\n12345678xx\nab\n"), Lines{"ab"});
  EXPECT_EQ(LinesOfAChangingLog(first, "x\n1234\n78ab\nab\n"), (Lines{"78ab", "ab"}));
  EXPECT_EQ(LinesOfAChangingLog(first, "x\n12345678ab and more\n"), Lines{"12345678ab and more"});
  EXPECT_EQ(LinesOfAChangingLog(first,
                                "x\n1234\x1A"
                                "78ab\n"),
            Lines{});
}

}  // namespace
}  // namespace ostrell
