#include <ctime>

#include "base/calendar.h"
#include "tests/jobs/job_run.h"
#include "tests/support/fake_event_log.h"
#include "unified/unified_report.h"

// rc7: what it gathers, in which order, where it goes and when its time is recorded.

namespace ostrell {
namespace {

constexpr int64_t kNow = FakeRun::kNow;
constexpr int64_t kLast = kNow - 20000;

class UnifiedReportJob : public testing::Test {
 protected:
  UnifiedReportJob() {
    run.Last("rpttm_localinfo") = kLast;
    run.policydb.documents[25] = R"({"id": 4711})";
    run.svclink.versions["C:\\Corvane\\data\\sigdb\\mal.db"] = 20261101003;
  }

  void AddDump() {
    run.files.Beside(L"a.dmp") = {.content = "no dump", .lastWrite = TicksFromSeconds(kNow - 60)};
  }
  bool Post() {
    const auto given = run.Get();
    DefaultClientIdProvider provider(given);
    return post_unified_report(given, provider);
  }
  FakeRegistry::Key Setting(const wchar_t* name) const {
    return FakeRegistry::Of(RegistryRoot::kMachine, L"SOFTWARE\\Velmora\\Corvane\\Ostrell", name);
  }
  // An item with the client fields.
  std::string Item(const std::string& own, const char* kernel = kKernel) const {
    return R"({"report_type":)" + own + R"(,"u":")" + run.machineIdentity +
           R"(","c":4711,"v":"6.0.3.27","d":20261101003,"s":19,"x":1,)" + kernel + R"(,"r":20000})";
  }
  std::string Dump(const char* kernel = kKernel) const {
    return Item(R"("dmp_files","name":"a.dmp","timestamp":1795565460)", kernel);
  }

  static constexpr auto kKernel = R"("ma":10,"mi":0,"bu":26100,"re":4652)";
  const std::string ask = "rc7 c=4711&s=19&x=1&";
  JobRun run;
};

TEST_F(UnifiedReportJob, SendsDumpsThenLogLinesThenEvents) {
  AddDump();
  const std::time_t time = kNow - 30;
  std::array<char, 64> line{};
  std::strftime(line.data(), line.size(), "[%Y-%m-%d %H:%M:%S] 0 failed\n", std::localtime(&time));
  run.files.Beside(L"protsvc.log") = {.content = line.data(), .lastWrite = TicksFromSeconds(kNow)};
  FakeEventLog events;
  events.modern[L"System"] = RecordedEventText{.provider = "Service Control Manager",
                                               .id = "7000",
                                               .data = "<Data Name='param1'>Velmora</Data>",
                                               .time = "2026-11-25T00:10:00Z"}
                                 .Text();
  run.eventLog.modern = FakeEventLog::Modern;
  EXPECT_TRUE(Post());
  EXPECT_EQ(
      run.Received(),
      Upload(ask, "[" + Dump() + "," +
                      Item(R"("log_stats","name":"protsvc.log","timestamp":1795565490,)"
                           R"("pattern":"0 failed")") +
                      "," +
                      Item(R"("syslog","name":"Service Control Manager","timestamp":1795565400,)"
                           R"("pattern":7000)") +
                      "]"));
  EXPECT_EQ(run.Recorded(), (Times{{"rpttm_localinfo", kNow}}));
  EXPECT_EQ(run.messages.back(), "post_unified_report Unified report completed: 3 items, result=1");
}

TEST_F(UnifiedReportJob, KernelThatCannotBeToldIsZero) {
  AddDump();
  run.facts.kernel = std::nullopt;
  EXPECT_TRUE(Post());
  EXPECT_EQ(run.Received(), Upload(ask, "[" + Dump(R"("ma":0,"mi":0,"bu":0,"re":0)") + "]"));
}

// The setting is the whole address up to the report's name.
TEST_F(UnifiedReportJob, GoesWhereTheReportLinkLeads) {
  AddDump();
  run.registry.texts[Setting(L"ReportLink")] = WideFromUtf8(run.baseUrl + "/v8").value();
  run.baseUrl = "https://127.0.0.1:1";  // refuses
  EXPECT_TRUE(Post());
  EXPECT_EQ(run.Received(), Upload(ask, "[" + Dump() + "]"));
}

TEST_F(UnifiedReportJob, WaitsForTheIntervalOfTheSettings) {
  AddDump();
  run.registry.numbers[Setting(L"MinReportInterval")] = 20001;
  EXPECT_FALSE(Post());
  EXPECT_EQ(run.Received(), Steps());
  run.registry.numbers[Setting(L"MinReportInterval")] = 20000;
  EXPECT_TRUE(Post());
  EXPECT_EQ(run.Received(), Upload(ask, "[" + Dump() + "]"));
}

TEST_F(UnifiedReportJob, FailureKeepsTheTime) {
  EXPECT_FALSE(Post());  // nothing to report
  EXPECT_EQ(run.Received(), Steps());
  AddDump();
  const std::string server = run.baseUrl;
  Steps expected;
  for (const char* fault : {"no-url", "put-cut"}) {
    run.baseUrl = server + "/fault/" + fault;
    EXPECT_FALSE(Post());
    expected.push_back(TicketFor(ask, "[" + Dump() + "]"));
    EXPECT_EQ(run.messages.back(),
              "post_unified_report Unified report completed: 1 items, result=0");
  }
  expected.emplace_back("PUT 200");
  EXPECT_EQ(run.Received(), expected);
  EXPECT_EQ(run.Recorded(), Times());
}

}  // namespace
}  // namespace ostrell
