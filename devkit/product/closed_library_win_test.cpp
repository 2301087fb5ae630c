#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "devkit/product/files_win.h"
#include "platform/closed_library.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

using testing::Optional;

TEST(TraceLogTest, AppendsALineAMessage) {
  const std::filesystem::path log = PathBesideProgram(L"tracelog.txt").value_or(L"");
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

}  // namespace
}  // namespace ostrell
