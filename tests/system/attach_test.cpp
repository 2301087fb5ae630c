#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/system/agent_run.h"

namespace ostrell {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

class Attach : public testing::Test {
 protected:
  void SetUp() override {
    if (std::system("command -v gdb >/dev/null") != 0) {
      GTEST_SKIP() << "gdb is not installed";
    }
  }
};

// Function, file and line of the program as it ships, whose symbols lie beside it.
TEST_F(Attach, StopsAtAFunctionAndGoesOn) {
  const SampleProduct product;
  const AgentServer server;
  const std::string said = AttachToAgent(
      "break ostrell::RunReports\n"
      "continue\n"
      "bt\n"
      "print run.baseUrl\n"
      "continue\n");
  EXPECT_THAT(said, ContainsRegex("breakpoint 1, WinMain .* at .*/app/main_win\\.cpp:[0-9]+\n"));
  EXPECT_THAT(said, ContainsRegex("#0  ostrell::RunReports .* at .*/report_driver\\.cpp:[0-9]+\n"));
  EXPECT_THAT(said, ContainsRegex("#1 .*ostrell::RunReportDriver \\(\\)"));
  EXPECT_THAT(said, HasSubstr("\"https://127.0.0.1:18443\""));
  EXPECT_THAT(said, HasSubstr("exited normally]"));
  EXPECT_EQ(server.Requests("rc7").size(), 2u);  // ticket, upload
}

// A second copy would not load the library.
TEST_F(Attach, ProgramEndsWithTheDebugger) {
  const SampleProduct product;
  const AgentServer server;
  EXPECT_THAT(AttachToAgent("quit\n"), HasSubstr("WinMain"));
  EXPECT_TRUE(server.Requests().empty());
  EXPECT_THAT(RunAgent("+loaddll").trace, HasSubstr("policydb.dll"));
}

}  // namespace
}  // namespace ostrell
