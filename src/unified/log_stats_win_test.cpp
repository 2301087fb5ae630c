#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>

#include "base/calendar.h"
#include "base/text.h"
#include "tests/support/program_files_win.h"
#include "unified/log_stats.h"

namespace ostrell {
namespace {

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

class LogStatsTest : public testing::Test {
 protected:
  ProgramFiles files;
  const std::string folder = Utf8FromWide(ProgramFiles::Folder().wstring());
};

TEST_F(LogStatsTest, ItemsOfBothLogsInOrder) {
  files.Write(L"qxupdate.exe.log",
              "[2025-03-01 12:00:00] startservice:: 0X00000005 <pe-time:>\r\n");
  files.Write(L"protsvc.log",
              "[2025-03-01 09:59:59] 0 failed, too old\r\n"
              "[2025/03.01 10:00:00] 0 FAILED <pe-time:1712345678> x\r\n"
              "0 failed without a time\r\n"
              "[2025-03-01 11:00:00] 10 failed <pe-time:0>\r\n"
              "[2025-03-01 11:30:00] 1 failed\r\n");
  const auto at = [](int hour) { return std::to_string(MarchFirst(hour)); };
  EXPECT_EQ(CompactText(collect_log_stats(MarchFirst(10))),
            R"([{"report_type":"log_stats","name":"protsvc.log","timestamp":)" + at(10) +
                R"(,"pattern":"0 failed","pe-time":1712345678},)"
                R"({"report_type":"log_stats","name":"protsvc.log","timestamp":)" +
                at(11) +
                R"(,"pattern":"0 failed"},)"
                R"({"report_type":"log_stats","name":"qxupdate.exe.log","timestamp":)" +
                at(12) + R"(,"pattern":"StartService:: 0x00000005"}])");
  const std::string first = folder + "\\protsvc.log";
  const std::string second = folder + "\\qxupdate.exe.log";
  EXPECT_THAT(
      ProgramFiles::Messages(),
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
  const auto log = files.Write(L"protsvc.log", "[2025-03-01 12:00:00] 0 failed\n");
  const int64_t modified =
      ProgramFiles::SetTime(log, FileTimeFromTicks(TicksFromSeconds(1740819600)));
  files.MakeFolder(L"qxupdate.exe.log");
  EXPECT_FALSE(collect_log_stats(modified + 1));
  const std::string first = folder + "\\protsvc.log";
  EXPECT_THAT(
      ProgramFiles::Messages(),
      IsSupersetOf({"collect_log_stats File " + first + " modified time " +
                        std::to_string(modified) + " earlier than start " +
                        std::to_string(modified + 1) + ", skip",
                    "collect_log_stats " + folder + "\\qxupdate.exe.log is a directory, skip",
                    std::string("collect_log_stats All files processed, total 0 matching entries "
                                "collected"),
                    std::string("collect_log_stats No matching entries found, return NULL")}));

  const ProgramFiles fresh;
  collect_log_stats(modified);  // equality passes
  EXPECT_THAT(ProgramFiles::Messages(),
              IsSupersetOf({"collect_log_stats File " + first + ": 1 matches found"}));

  const ProgramFiles another;
  std::filesystem::remove(log);
  EXPECT_FALSE(collect_log_stats(0));
  EXPECT_THAT(ProgramFiles::Messages(), IsSupersetOf({"collect_log_stats File " + first +
                                                      " doesn't exist or inaccessible, skip"}));
}

TEST_F(LogStatsTest, WhatLimitsLeaveOutIsLogged) {
  std::string log;
  for (int i = 0; i < 65539; ++i) {
    log += "[2025-03-01 12:00:00] 0 failed\n";
  }
  files.Write(L"protsvc.log", log);
  EXPECT_EQ(json_array_size(collect_log_stats(0).Get()), 65536u);
  const std::string path = folder + "\\protsvc.log";
  EXPECT_THAT(
      ProgramFiles::Messages(),
      IsSupersetOf({"collect_matching_entries Limits of file " + path +
                        ": left out 3 matches, the rest of 0 lines",
                    "collect_matching_entries File " + path + " processed, found 65536 matches",
                    "collect_log_stats File " + path + ": 65536 matches found"}));
}

// Another process may have it open in any way, and rotate it away.
TEST_F(LogStatsTest, SharesTheLogWithItsWriter) {
  const auto log = files.Write(L"busy.log", "[2025-03-01 12:00:00] 0 failed\n");
  const FileHandle writer(CreateFileW(log.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  ASSERT_TRUE(writer);
  std::vector<LogMatch> matches;
  EXPECT_EQ(collect_matching_entries(log.wstring(), "0 failed", 0, matches), 1);
  ASSERT_EQ(matches.size(), 1u);
  EXPECT_EQ(matches[0].line, "[2025-03-01 12:00:00] 0 failed");
  EXPECT_EQ(matches[0].time, MarchFirst(12));

  const FileHandle closed(CreateFileW(L"closed.log", GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                      FILE_FLAG_DELETE_ON_CLOSE, nullptr));
  EXPECT_EQ(collect_matching_entries(L"closed.log", "0 failed", 0, matches), 0);
  EXPECT_EQ(ProgramFiles::Messages().back(),
            "collect_matching_entries Failed to open file: closed.log");
}

}  // namespace
}  // namespace ostrell
