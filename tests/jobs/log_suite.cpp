#include "reports/detection_log.h"
#include "reports/popup_block_log.h"
#include "tests/jobs/job_run.h"
#include "tests/support/recorded_cases.h"

// rc2 and rc5: the records of the period, as they are sent, and when their time is recorded.

namespace ostrell {
namespace {

constexpr int64_t kNow = FakeRun::kNow;

// An upload that fails and where.
struct Failure {
  const char* fault;
  bool isAsked;
  bool isPut;
};
constexpr Failure kFailures[] = {{"no-url", true, false}, {"put-cut", true, true}};

Steps FailedUpload(const Failure& failure, const std::string& ask, const std::string& body) {
  Steps steps = Upload(ask, body);
  steps.resize(failure.isPut ? 2 : 1);
  return steps;
}

TEST(DetectionLogJob, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("detection_log_job")) {
    JobRun run;
    run.policydb.documents[0] = recorded["records"];
    DetectionLogJob(run.Get());
    const bool isSent = recorded.Has("body");
    EXPECT_EQ(run.Received(), isSent ? Upload("rc2 ", recorded["body"]) : Steps());
    EXPECT_EQ(run.Recorded(), isSent ? (Times{{"rpttm_li", kNow}}) : Times()) << recorded.Name();
    EXPECT_EQ(run.policydb.queries, recorded.All("query"));
    EXPECT_EQ(run.policydb.dataPath, "C:\\Corvane\\data\\");
  }
}

TEST(DetectionLogJob, FailureKeepsTheTime) {
  for (const Failure& failure : kFailures) {
    JobRun run(failure.fault);
    run.policydb.documents[0] = R"([{"ts": 1795565520, "fid": 69, "detail": {}}])";
    DetectionLogJob(run.Get());
    EXPECT_EQ(run.Received(),
              FailedUpload(failure, "rc2 ", R"([{"fid":69,"ts_occur":1795565520}])"));
    EXPECT_EQ(run.Recorded(), Times());
  }
  JobRun run;  // without a record store
  DetectionLogJob(run.Get());
  EXPECT_EQ(run.Received(), Steps());
  EXPECT_EQ(run.Recorded(), Times());
}

void RunPopupBlockJob(JobRun& run, const PopupDatabase& database) {
  run.paths.databases[24] = PathText(database.path);
  run.Last("rpttm_li_tools") = kNow - 14400;
  PopupBlockJob(run.Get());
}

// A row at each end of the period and outside.
constexpr auto kRows = R"(
  (1795551119,'{"product_name":"before"}'),(1795551120,'{"product_name":"start"}'),
  (1795565520,'{"product_name":"end"}'),(1795565521,'{"product_name":"behind"}'),
  (1795560000,'{"product_name":"popblock","gname":"g","iname":"i","n":1}'),
  (1795559999,'{"product_name":"popblock","gname":"g","iname":"i","n":2}'),(1795560000,'{"n":1}'))";
constexpr auto kEntries =
    R"([{"product_name":"end"},{"product_name":"popblock","gname":"g","iname":"i","n":1},)"
    R"({"product_name":"start"}])";

TEST(PopupBlockJob, SendsWhatTheDatabaseHasOfThePeriod) {
  const PopupDatabase database;
  database.Fill(kRows);
  JobRun run;
  RunPopupBlockJob(run, database);
  EXPECT_EQ(run.Received(), Upload("rc5 ", kEntries));
  EXPECT_EQ(run.Recorded(), (Times{{"rpttm_li_tools", kNow}}));
  for (const Failure& failure : kFailures) {
    JobRun failing(failure.fault);
    RunPopupBlockJob(failing, database);
    EXPECT_EQ(failing.Received(), FailedUpload(failure, "rc5 ", kEntries));
    EXPECT_EQ(failing.Recorded(), Times());
  }
}

// A database that is missing is made for the product's service.
TEST(PopupBlockJob, SendsNothingWithoutEntries) {
  const PopupDatabase database;
  for (int round = 0; round < 2; ++round) {
    JobRun run;
    RunPopupBlockJob(run, database);
    EXPECT_EQ(run.Received(), Steps());
    EXPECT_EQ(run.Recorded(), Times());
    EXPECT_EQ(std::filesystem::exists(database.path), round == 0);
    std::filesystem::remove_all(database.folder);  // then it cannot be made
  }
}

}  // namespace
}  // namespace ostrell
