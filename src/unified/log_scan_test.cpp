#include "unified/log_scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/expect_recorded.h"
#include "tests/support/plain_log_reading.h"

namespace ostrell {
namespace {

const size_t kBlockSizes[] = {1, 2, 3, 7, 16, 64, 65, LogScanSizes().block};

std::string Joined(const std::vector<LogLine>& lines) {
  std::string text;
  for (const LogLine& line : lines) {
    text += (text.empty() ? "" : "\n") + line.text + (line.isCut ? "(cut)" : "");
  }
  return text;
}

// The lines as the scan gives them for any size of a block, which have to be those of the plain
// reading.
std::string Scanned(const std::string& file, const std::string& signature, size_t most) {
  const auto expected = PlainLogReading(file, signature, most);
  for (const size_t blockSize : kBlockSizes) {
    EXPECT_EQ(MatchingLines(ReaderOf(file), signature, {blockSize, most}), expected)
        << file << " in blocks of " << blockSize << ", " << most << " kept";
  }
  return Joined(expected);
}

TEST(LogScan, RecordedCases) {
  ExpectRecorded("log_scan", [](const std::string& file, const RecordedCase& recorded) {
    for (const size_t most : {1, 2, 3, 8, 65, 300, 301, 302}) {
      Scanned(file, recorded["signature"], most);
    }
    return Scanned(file, recorded["signature"], LogScanSizes().maxOfLine);
  });
  EXPECT_TRUE(MatchingLines(ReaderOf("ab\n"), "", {}).empty());
}

// The end of a line and of the file in every place relative to vectors and blocks.
TEST(LogScan, SignatureIsFoundInEveryPlace) {
  for (size_t before = 0; before < 200; ++before) {
    const std::string line = std::string(before, 'a') + "0 failed";
    EXPECT_EQ(Scanned("x\n" + line + "\n0 faile\n\x1A\n0 failed", "0 failed", 1000), line);
  }
}

// Of a line of 100 MiB with the match at its end, the part in between is read once.
TEST(LogScan, MatchMayStandFarBehindWhatIsKept) {
  constexpr uint64_t kLine = uint64_t{100} << 20;
  constexpr size_t kKept = size_t{16} << 20;
  const std::string tail = "0 failed\n[0 failed";
  uint64_t bytesRead = 0;
  const LogReader read = [&](uint64_t offset, std::span<char> to) {
    const uint64_t rest = kLine + tail.size() - offset;
    to = to.first(static_cast<size_t>(std::min<uint64_t>(to.size(), rest)));
    std::ranges::fill(to, '.');
    for (uint64_t at = std::max(offset, kLine); at < offset + to.size(); ++at) {
      to[at - offset] = tail[at - kLine];
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

TEST(LogScan, ReaderMayGiveLessThanAskedForAndEachByteOnce) {
  std::string file;
  for (int i = 0; i < 1000; ++i) {
    file += "0 failed 0 failed\r\n";
  }
  for (const size_t most : {3, 1 << 20}) {
    size_t bytesRead = 0;
    const LogReader read = [&](uint64_t offset, std::span<char> to) {
      const size_t count =
          ReadFromText(file, offset, to.first(std::min<size_t>(to.size(), most - offset % 3)));
      bytesRead += count;
      return count;
    };
    const auto lines = MatchingLines(read, "0 failed", {});
    EXPECT_EQ(lines, std::vector<LogLine>(1000, {"0 failed 0 failed"}));
    EXPECT_TRUE(most == 3 || bytesRead == file.size()) << bytesRead;
  }
}

// The file becomes the input between the first reading of a line that began in an earlier block and
// the second one.
TEST(LogScan, RecordedChangesBetweenTwoReadings) {
  ExpectRecorded("changing_log", [](const std::string& then, const RecordedCase& recorded) {
    uint64_t reached = 0;
    bool changed = false;
    const LogReader read = [&](uint64_t offset, std::span<char> to) {
      changed = changed || offset < reached;
      reached = offset;
      return ReadFromText(changed ? then : recorded["first"], offset, to);
    };
    return Joined(MatchingLines(read, "ab", {.block = 4}));
  });
}

}  // namespace
}  // namespace ostrell
