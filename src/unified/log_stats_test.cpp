#include "unified/log_stats.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>

#include "base/calendar.h"
#include "tests/support/fake_run.h"

namespace ostrell {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;

// 1 March 2025, local time, at that hour.
int64_t MarchFirst(int hour) {
  std::tm time{};
  time.tm_year = 125;
  time.tm_mon = 2;
  time.tm_mday = 1;
  time.tm_hour = hour;
  time.tm_isdst = -1;
  return std::mktime(&time);
}

constexpr int64_t kModified = 1740819600;

class LogStatsTest : public testing::Test {
 protected:
  FakeFiles::Entry& Log(const wchar_t* name, std::string content) {
    auto& entry = fake.files.Beside(name);
    entry = {.content = std::move(content), .lastWrite = TicksFromSeconds(kModified)};
    return entry;
  }
  JsonOwner Collect(int64_t tmStart) { return collect_log_stats(fake.Get(), tmStart); }

  FakeRun fake;
  const std::string folder = "C:\\Corvane\\bin";
  const std::string first = folder + "\\protsvc.log";
  const std::string second = folder + "\\qxupdate.exe.log";
};

TEST_F(LogStatsTest, ItemsOfBothLogsInOrder) {
  Log(L"qxupdate.exe.log", "[2025-03-01 12:00:00] startservice:: 0X00000005 <pe-time:>\r\n");
  Log(L"protsvc.log",
      "[2025-03-01 09:59:59] 0 failed, too old\r\n"
      "[2025/03.01 10:00:00] 0 FAILED <pe-time:1712345678> x\r\n"
      "0 failed without a time\r\n"
      "[2025-03-01 11:00:00] 10 failed <pe-time:0>\r\n"
      "[2025-03-01 11:30:00] 1 failed\r\n");
  for (const wchar_t* name : {L"protsvc.log", L"qxupdate.exe.log"}) {
    fake.files.Beside(name).lastWrite = TicksFromSeconds(MarchFirst(13));
  }
  const auto at = [](int hour) { return std::to_string(MarchFirst(hour)); };
  EXPECT_EQ(CompactText(Collect(MarchFirst(10))),
            R"([{"report_type":"log_stats","name":"protsvc.log","timestamp":)" + at(10) +
                R"(,"pattern":"0 failed","pe-time":1712345678},)"
                R"({"report_type":"log_stats","name":"protsvc.log","timestamp":)" +
                at(11) +
                R"(,"pattern":"0 failed"},)"
                R"({"report_type":"log_stats","name":"qxupdate.exe.log","timestamp":)" +
                at(12) + R"(,"pattern":"StartService:: 0x00000005"}])");
  EXPECT_THAT(
      fake.messages,
      ElementsAre("collect_log_stats Processing log files for unified collection: " + folder,
                  "collect_log_stats Checking file: " + first,
                  "collect_matching_entries File " + first + " processed, found 2 matches",
                  "collect_log_stats File " + first + ": 2 matches found",
                  "collect_log_stats Checking file: " + second,
                  "collect_matching_entries File " + second + " processed, found 1 matches",
                  "collect_log_stats File " + second + ": 1 matches found",
                  "collect_log_stats All files processed, total 3 matching entries collected"));
}

TEST_F(LogStatsTest, FilesThatAreSkipped) {
  Log(L"protsvc.log", "[2025-03-01 12:00:00] 0 failed\n");
  fake.files.Beside(L"qxupdate.exe.log").isDirectory = true;
  EXPECT_FALSE(Collect(kModified + 1));
  EXPECT_THAT(
      fake.messages,
      IsSupersetOf({"collect_log_stats File " + first +
                        " modified time 1740819600 earlier than start 1740819601, skip",
                    "collect_log_stats " + second + " is a directory, skip",
                    std::string("collect_log_stats All files processed, total 0 matching "
                                "entries collected"),
                    std::string("collect_log_stats No matching entries found, return NULL")}));
  EXPECT_TRUE(fake.files.opened.empty());
  EXPECT_EQ(json_array_size(Collect(kModified).Get()), 1u);

  fake.files.entries.clear();
  EXPECT_FALSE(Collect(0));
  EXPECT_THAT(fake.messages,
              Contains("collect_log_stats File " + first + " doesn't exist or inaccessible, skip"));
  std::vector<LogMatch> matches;
  EXPECT_EQ(collect_matching_entries(fake.Get(), L"gone.log", "0 failed", 0, matches), 0);
  EXPECT_EQ(fake.messages.back(), "collect_matching_entries Failed to open file: gone.log");

  fake.files.program = std::nullopt;
  EXPECT_FALSE(Collect(0));
  EXPECT_EQ(fake.messages.back(), "collect_log_stats GetModuleFileNameW failed, return NULL");
}

// What was read until then counts.
TEST_F(LogStatsTest, LogThatCannotBeReadToItsEnd) {
  std::string log = "[2025-03-01 12:00:00] 0 failed\n" + std::string(size_t{1} << 20, '.');
  Log(L"protsvc.log", log).bad = log.size() - 1;
  EXPECT_EQ(json_array_size(Collect(0).Get()), 1u);
}

TEST_F(LogStatsTest, WhatLimitsLeaveOutIsLogged) {
  const std::string line = "[2025-03-01 12:00:00] 0 failed\n";
  std::string log = "0 failed\n[2025-03-01 12:00:00] 0 failed, first\n";
  for (int i = 0; i < 65535; ++i) {
    log += line;
  }
  Log(L"protsvc.log", log + line + "[2025-03-01 12:00:00] 1 failed\n" + line);
  std::vector<LogMatch> matches;
  EXPECT_EQ(collect_matching_entries(fake.Get(), L"protsvc.log", "0 Failed", 0, matches), 65536);
  EXPECT_EQ(matches.size(), 65536u);
  EXPECT_EQ(matches.at(0).line, "[2025-03-01 12:00:00] 0 failed, first");
  Log(L"protsvc.log", line.substr(0, 30) + std::string(size_t{16} << 20, '.'));
  EXPECT_EQ(collect_matching_entries(fake.Get(), L"protsvc.log", "0 Failed", 0, matches), 1);
  EXPECT_THAT(
      fake.messages,
      ElementsAre("collect_matching_entries Limits of file protsvc.log: left out 2 matches, the "
                  "rest of 0 lines",
                  "collect_matching_entries File protsvc.log processed, found 65536 matches",
                  "collect_matching_entries Limits of file protsvc.log: left out 0 matches, the "
                  "rest of 1 lines",
                  "collect_matching_entries File protsvc.log processed, found 1 matches"));
}

}  // namespace
}  // namespace ostrell
