#include "reports/machine_information.h"
#include "tests/jobs/job_run.h"

// rc1: what it says, what becomes of the answer, and when its time is recorded.

namespace ostrell {
namespace {

constexpr int64_t kNow = FakeRun::kNow;
// The report server's own instructions.
constexpr auto kInstructions = R"({"samples":{"quarantine":{"cnt":5,"vnflt":[]}}})";
const std::string kKnown = "rc1 c=4711&v=6.0.3.27&d=20261101003&s=19&x=1&r=";

void Fill(JobRun& run) {
  run.policydb.documents[25] = R"({"id": 4711})";
  run.svclink.versions["C:\\Corvane\\data\\sigdb\\mal.db"] = 20261101003;
}

TEST(MachineInformationJob, SendsTheGapAndAdvancesOnceADay) {
  const struct {
    int64_t last;
    const char* gap;
    bool isRecorded;
  } cases[] = {{0, "1795565520", true},
               {kNow - 86401, "86401", true},
               {kNow - 86400, "86400", false},
               {kNow, "0", false},
               {kNow + 1, "18446744073709551615", false}};
  for (const auto& [last, gap, isRecorded] : cases) {
    JobRun run;
    Fill(run);
    run.Last("rpttm_ui") = last;
    JsonOwner answer;
    MachineInformationJob(run.Get(), answer);
    EXPECT_EQ(run.Received(), Steps{kKnown + gap + "&ma=10&mi=0&bu=26100&re=4652 200"});
    EXPECT_EQ(CompactText(answer), kInstructions);
    EXPECT_EQ(run.Recorded(), isRecorded ? (Times{{"rpttm_ui", kNow}}) : Times()) << gap;
  }
}

TEST(MachineInformationJob, SaysZeroForWhatItCannotTell) {
  JobRun run;
  run.facts.system = std::nullopt;
  run.facts.kernel = std::nullopt;
  run.registry
      .numbers[FakeRegistry::Of(RegistryRoot::kUser, L"SOFTWARE\\Velmora\\Corvane", L"cid")] = 1234;
  run.Last("rpttm_ui") = kNow - 5;
  EXPECT_EQ(SendMachineInformation(run.Get(), 5, nullptr), 1);
  EXPECT_EQ(run.Received(), Steps{"rc1 c=1234&v=6.0.3.27&d=0&s=0&x=0&r=5&ma=0&mi=0&bu=0&re=0 200"});
}

TEST(MachineInformationJob, FailureKeepsAnswerAndTime) {
  const struct {
    const char* fault;
    const char* status;  // nothing: not asked
    bool hasVersion = true;
    bool hasStream = true;
  } cases[] = {{"status-404", "404"}, {"garbage", "200"},       {"cut", "200"},
               {"redirect", "302"},   {"none", nullptr, false}, {"none", nullptr, true, false}};
  for (const auto& [fault, status, hasVersion, hasStream] : cases) {
    SCOPED_TRACE(fault);
    JobRun run(fault);
    Fill(run);
    run.files.entries[L"C:\\Corvane\\VERSION"].content = hasVersion ? "6.0.3.27" : "5.0.300.1";
    run.svclink.createsNothing = !hasStream;
    JsonOwner answer(json_array());
    MachineInformationJob(run.Get(), answer);
    const Steps steps = run.Received();
    ASSERT_EQ(steps.size(), status != nullptr ? 1u : 0u);
    EXPECT_TRUE(steps.empty() || steps[0].ends_with(status));
    EXPECT_EQ(CompactText(answer), "[]");
    EXPECT_EQ(run.Recorded(), Times());
  }
}

}  // namespace
}  // namespace ostrell
