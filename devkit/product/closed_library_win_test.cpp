#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/closed_library.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

using testing::Optional;

std::filesystem::path BesideProgram(const char* name) {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  return std::filesystem::path(program).replace_filename(name);
}

TEST(TraceLogTest, AppendsALineAMessage) {
  const std::filesystem::path log = BesideProgram("tracelog.txt");
  std::filesystem::remove(log);
  const TraceLog traceLog(LoadTraceLog());
  TraceLogger(traceLog, "post_unified_report", 42)(L"Collected %u total items", 3U);
  // A reader does not keep the next message out.
  std::ifstream reader(log);
  ASSERT_TRUE(reader);
  traceLog.Write("collect_dump_files", -1, 2, L"caf\u00e9 \U0001f600\r\nsecond, skip");
  EXPECT_THAT(ContentOf(log),
              Optional(std::string(
                  "post_unified_report:42 1 Collected 3 total items\n"
                  "collect_dump_files:-1 2 caf\xc3\xa9 \xf0\x9f\x98\x80  second, skip\n")));
}

TEST(CrashSentryTest, IsInstalledWithZero) {
  const std::filesystem::path note = BesideProgram("crashsentry.txt");
  std::filesystem::remove(note);
  InstallCrashHandler();
  EXPECT_THAT(ContentOf(note), Optional(std::string("InstallCrashSentry(0)\n")));
}

}  // namespace
}  // namespace ostrell
