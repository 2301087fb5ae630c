#include "reports/scan_statistics.h"
#include "tests/jobs/job_run.h"

// rc4: which files go, and when its time is recorded.

namespace ostrell {
namespace {

constexpr int64_t kNow = FakeRun::kNow;
constexpr int64_t kInterval = 1296000;
constexpr auto kCurrent = L"C:\\Corvane\\data\\tallyx5.dat";
constexpr auto kPayload = "payload of the scanner";
// CRC, which another program computed, four unread bytes and the length.
const std::string kSound =
    std::string("\xD5\xB4\x21\x44????\x16\0\0\0\0\0\0\0", 16) + kPayload + "ignored";

TEST(ScanStatsJob, DeletesAndRecordsWhateverBecomesOfTheFile) {
  const Steps sent = Upload("rc4 v=5&", kPayload);
  const struct {
    const char* what;
    std::string content;  // empty: there is no file
    int64_t age;
    Steps steps;
    bool isDue;
    const char* fault = "none";
    bool isHeld = false;
  } cases[] = {
      {"sound", kSound, kInterval, sent, true},
      {"never sent", kSound, kNow, sent, true},
      {"a second early", kSound, kInterval - 1, {}, false},
      {"in the future", kSound, -1, {}, false},
      {"damaged", "x" + kSound, kInterval, {}, true},
      {"missing", "", kInterval, {}, true},
      {"no ticket", kSound, kInterval, {sent[0]}, true, "no-url"},
      {"upload fails", kSound, kInterval, sent, true, "put-cut"},
      {"not to be deleted", kSound, kInterval, sent, true, "none", true},
  };
  for (const auto& [what, content, age, steps, isDue, fault, isHeld] : cases) {
    SCOPED_TRACE(what);
    JobRun run(fault);
    run.clock.now = kNow + 5;
    run.Last("rpttm_cc") = kNow - age;
    for (const wchar_t* older : {L"tallyx", L"tallyx1", L"tallyx2", L"tallyx3", L"tallyx4"}) {
      run.files.Beside(older + std::wstring(L".dat"));
    }
    if (!content.empty()) {
      run.files.entries[kCurrent] = {.content = content, .isHeld = isHeld};
    }
    ScanStatsJob(run.Get());
    EXPECT_EQ(run.Received(), steps);
    EXPECT_EQ(run.Recorded(),
              isDue && !content.empty() ? (Times{{"rpttm_cc", kNow + 5}}) : Times());
    EXPECT_EQ(run.files.Has(kCurrent), !isDue || isHeld);
    // The version file is left.
    EXPECT_EQ(run.files.entries.size(), (isDue ? 1u : 6u) + (run.files.Has(kCurrent) ? 1 : 0));
  }
}

}  // namespace
}  // namespace ostrell
