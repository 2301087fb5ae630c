#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>

#include "tests/system/agent_run.h"

namespace ostrell {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(StartUp, ReportingSwitchedOffSendsNothing) {
  const SampleProduct product;
  const AgentServer server;
  product.Set("int32", "isReport", 0);
  EXPECT_EQ(RunAgent().exitCode, 0);
  EXPECT_TRUE(server.Requests().empty());
}

// The first copy waits for a server that does not answer while the second one starts.
TEST(StartUp, SecondCopyEndsAtOnce) {
  const SampleProduct product;
  AgentServer server;
  server.server.Faults().Set(Fault::kSlow);
  auto first = std::async(std::launch::async, [] { return RunAgent().exitCode; });
  while (server.Requests().empty() &&
         first.wait_for(std::chrono::milliseconds(10)) == std::future_status::timeout) {
  }
  ASSERT_EQ(server.Requests().size(), 1u);

  const RunResult second = RunAgent("+loaddll,+winsock");
  EXPECT_EQ(second.exitCode, 0);
  EXPECT_THAT(second.trace, HasSubstr("crashsentry.dll"));
  EXPECT_THAT(second.trace, Not(HasSubstr("policydb.dll")));
  EXPECT_THAT(second.trace, Not(HasSubstr("svclink.dll")));
  EXPECT_THAT(second.trace, Not(HasSubstr("WSASocket")));
  EXPECT_EQ(first.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
  EXPECT_EQ(server.Requests().size(), 1u);
  server.server.Stop();  // lets the first one go
  EXPECT_EQ(first.get(), 0);
}

// What the second copy is shown not to do, the only one is shown to do, after it has protected the
// process: Wine says of each call that it does nothing. The crash handler is loaded from the
// program's folder by full path and gets its one call, also when the program was started from
// another folder.
TEST(StartUp, OnlyCopyProtectsItselfAndOpensStoreAndSocket) {
  const SampleProduct product;
  const AgentServer server;
  const RunResult run = RunAgent("fixme+heap,fixme+process,+loaddll,+winsock");
  EXPECT_EQ(run.exitCode, 0);
  const size_t firstLibrary = run.trace.find("crashsentry.dll");
  for (const char* call : {"RtlSetHeapInformation", "SetProcessMitigationPolicy (10,",
                           "SetProcessMitigationPolicy (6,", "SetProcessMitigationPolicy (16,"}) {
    EXPECT_LT(run.trace.find(call), firstLibrary) << call;
  }
  const size_t eventLog = run.trace.find("wevtapi.dll");
  ASSERT_NE(eventLog, std::string::npos);
  EXPECT_GT(eventLog, firstLibrary);
  for (const char* used : {"policydb.dll", "svclink.dll", "WSASocket"}) {
    EXPECT_THAT(run.trace, HasSubstr(used));
  }
  EXPECT_THAT(ReadText(product.BinFolder() / "crashsentry.txt"), HasSubstr("0"));
}

}  // namespace
}  // namespace ostrell
