#include "app/report_driver.h"
#include "base/calendar.h"
#include "tests/jobs/job_run.h"

// All jobs in their order: none stops a later one, and each records its own time.

namespace ostrell {
namespace {

constexpr int64_t kNow = FakeRun::kNow;

// A run in which every report has something to send.
class FullRun : public JobRun {
 public:
  explicit FullRun(const std::string& fault = {}) : JobRun(fault) {
    policydb.documents[0] =
        R"([{"ts": 1795565520, "fid": -2147483647, "detail": {"pathname": "C:\\s\\a", "solid": 0,
             "result": 0, "recname": "Virus/A"}},
            {"ts": 1795565520, "fid": 3, "detail": {"pathname": "C:\\s\\b", "solid": 0,
             "result": 0, "recname": "Virus/A"}}])";
    policydb.quarantine = R"([{"id": 1, "fid": 1, "sha1": "01", "fn": "C:\\s\\c", "vn": "Trojan/A",
                               "ts": 1795565520}])";
    policydb.held[1] = std::string(2000, 'q');
    files.entries[L"C:\\s\\a"].content = std::string(2000, 'a');
    files.entries[L"C:\\s\\b"].content = std::string(2000, 'b');
    files.entries[L"C:\\Corvane\\data\\tallyx5.dat"].content =
        std::string("\xD5\xB4\x21\x44????\x16\0\0\0\0\0\0\0", 16) + "payload of the scanner";
    files.Beside(L"a.dmp") = {.content = "no dump", .lastWrite = TicksFromSeconds(kNow)};
    database.Fill("(1795565520,'{\"product_name\":\"a\"}')");
    paths.databases[24] = PathText(database.path);
  }

  // The reports in their order, each series of requests once.
  std::string Sequence() const {
    std::string sequence;
    for (const std::string& step : Received()) {
      const std::string report = step.substr(0, 3);
      if (report != "PUT" && !sequence.ends_with(report)) {
        sequence += (sequence.empty() ? "" : " ") + report;
      }
    }
    return sequence;
  }

 private:
  const PopupDatabase database;
};

TEST(RunReports, SendsAllOnceInTheirOrder) {
  FullRun run;
  run.clock.now = kNow + 5;
  RunReports(run.Get());
  EXPECT_EQ(run.Sequence(), "rc1 rc2 rc5 rc3 rc4 rc7");
  EXPECT_EQ(run.policydb.restored, std::vector<int64_t>{1}) << "the answer to rc1 asks for it";
  EXPECT_EQ(run.Recorded(), (Times{{"rpttm_ui", kNow},
                                   {"rpttm_li", kNow},
                                   {"rpttm_li_tools", kNow},
                                   {"rpttm_sf", kNow},
                                   {"rpttm_fp", kNow},
                                   {"rpttm_qf", kNow},
                                   {"rpttm_cc", kNow + 5},
                                   {"rpttm_localinfo", kNow}}));
  run.store.written.clear();
  RunReports(run.Get());
  EXPECT_EQ(run.Sequence(), "rc1 rc2 rc5 rc3 rc4 rc7 rc1");
  EXPECT_EQ(run.Recorded(), Times());
}

// The statistics are gone, and samples are not tried again.
TEST(RunReports, WhatFailedIsSentAgain) {
  FullRun run("put-cut");
  RunReports(run.Get());
  EXPECT_EQ(run.Sequence(), "rc1 rc2 rc5 rc3 rc4 rc7");
  EXPECT_EQ(run.Recorded(), (Times{{"rpttm_ui", kNow},
                                   {"rpttm_sf", kNow},
                                   {"rpttm_fp", kNow},
                                   {"rpttm_qf", kNow},
                                   {"rpttm_cc", kNow}}));
  run.store.written.clear();
  run.baseUrl = TestServerUrl();
  RunReports(run.Get());
  EXPECT_EQ(run.Sequence(), "rc1 rc2 rc5 rc3 rc4 rc7 rc1 rc2 rc5 rc7");
  EXPECT_EQ(run.Recorded(),
            (Times{{"rpttm_li", kNow}, {"rpttm_li_tools", kNow}, {"rpttm_localinfo", kNow}}));
}

TEST(RunReports, JobThatFailsStopsNoOther) {
  FullRun run;
  run.svclink.createsNothing = true;  // no answer to rc1, and so no quarantined file
  RunReports(run.Get());
  EXPECT_EQ(run.Sequence(), "rc2 rc5 rc3 rc4 rc7");
  EXPECT_EQ(run.policydb.restored, std::vector<int64_t>());
}

// A machine without anything to report and without a settings store.
TEST(RunReports, NothingToSend) {
  JobRun run;
  run.settings = Settings();
  RunReports(run.Get());
  EXPECT_EQ(run.Received().size(), 1u);  // rc1
  EXPECT_EQ(run.Recorded(), Times());
}

}  // namespace
}  // namespace ostrell
