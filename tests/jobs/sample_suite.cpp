#include "reports/quarantine.h"
#include "reports/samples.h"
#include "tests/jobs/job_run.h"
#include "tests/support/recorded_cases.h"

// rc3: which files are asked about, restored and sent, and when the three times are recorded.
// Digests are those of the sha1sum program.

namespace ostrell {
namespace {

constexpr int64_t kNow = FakeRun::kNow;
constexpr auto kKnownSha1 = "B39A8714250A5C1A262B780E6AD7D93D751D1EAD";  // 2000 times "k"
constexpr auto kSha1OfA = "059C294680401882ABC912771FFF152EE638EE80";

std::string Question(const std::string& sha1, int source, const std::string& name, int status) {
  return "rc3 h=" + sha1 + "&t=" + std::to_string(source) + "&p=C%3A%5Cs%5C" + name + " " +
         std::to_string(status);
}

void Append(Steps& steps, const Steps& more) {
  steps.insert(steps.end(), more.begin(), more.end());
}

// A question whose answer is "unknown", and the upload.
Steps Sent(const std::string& sha1, int source, const std::string& name,
           const std::string& content) {
  Steps steps = {Question(sha1, source, name, 404)};
  Append(steps, Upload("rc3 h=" + sha1 + "&", content));
  return steps;
}

struct FileCase {
  const char* what;
  FakeFiles::Entry file;
  int32_t result;
  Steps steps;
  const char* fault = "none";
};

std::vector<FileCase> FileCases() {
  const std::string smallest(1024, 'x');
  const std::string largest(5242880, 'x');
  const std::string link("L\0\0\0", 4);
  const std::string noLink = std::string("L\0\0\1", 4) + std::string(2000, 'x');
  const std::string a(2000, 'a');
  constexpr auto kSmallest = "D5A3C9BD7E746C98B4AEA0E9194FB9555B3C22AD";
  constexpr auto kName = "%C3%A9%20%26%23";
  Steps cut = Sent(kSmallest, 2, kName, smallest);
  return {
      {"too small", {.content = smallest.substr(1)}, 1, {}},
      {"smallest", {.content = smallest}, 1, cut},
      {"largest",
       {.content = largest},
       1,
       Sent("4C7DFFD80750FD231E27D71292631F7E9846B020", 2, kName, largest)},
      {"too large", {.content = largest + "x"}, 1, {}},
      {"shell link", {.content = link + smallest}, 1, {}},
      {"no shell link",
       {.content = noLink},
       1,
       Sent("5F14BB7EF04F8B12A83102B541097D45ADCCAC25", 2, kName, noLink)},
      {"known", {.content = std::string(2000, 'k')}, 1, {Question(kKnownSha1, 2, kName, 200)}},
      {"pipe", {.content = a, .isOnDisk = false}, 0, {}},
      {"size not told", {.content = a, .size = FakeFiles::kUntold}, 0, {}},
      {"shorter than told", {.content = a, .size = 2001}, 0, {}},
      {"last byte not readable", {.content = a, .bad = 1999}, 0, {}},
      {"no answer", {.content = smallest}, 0, {Question(kSmallest, 2, kName, 500)}, "status-500"},
      {"answer cut", {.content = a}, 0, {Question(kSha1OfA, 2, kName, 404)}, "cut"},
      {"no ticket", {.content = smallest}, 0, {cut[0], cut[1]}, "no-url"},
      {"upload fails", {.content = smallest}, 0, cut, "put-cut"},
  };
}

TEST(SubmitSampleFile, AsksFirstAndSendsWhatIsUnknown) {
  for (const FileCase& testCase : FileCases()) {
    SCOPED_TRACE(testCase.what);
    JobRun run(testCase.fault);
    run.files.entries[L"C:\\s\\\xE9 &#"] = testCase.file;
    EXPECT_EQ(SubmitSampleFile(run.Get(), "C:\\s\\\xC3\xA9 &#"), testCase.result);
    EXPECT_EQ(run.Received(), testCase.steps);
  }
}

TEST(SubmitSampleFile, PathsOfAtMost511Units) {
  for (const size_t length : {511, 512}) {
    JobRun run;
    run.files.entries[L"C:\\" + std::wstring(length - 3, L'\xE9')].content = "too small";
    std::string path = "C:\\";
    for (size_t unit = 3; unit < length; ++unit) {
      path += "\xC3\xA9";
    }
    EXPECT_EQ(SubmitSampleFile(run.Get(), path), length == 511 ? 1 : 0);
  }
  EXPECT_EQ(SubmitSampleFile(JobRun().Get(), "C:\\missing"), 0);
}

// Each file holds what the server knows.
void AddFiles(JobRun& run, std::string_view names) {
  for (const char name : names) {
    run.files.entries[std::wstring(L"C:\\s\\") + wchar_t(name)].content = std::string(2000, 'k');
  }
}

TEST(SampleReports, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("sample_job")) {
    JobRun run;
    run.policydb.documents[0] = recorded["records"];
    AddFiles(run, "AabBCDFGHZ");
    SampleReports(run.Get(), nullptr);
    Steps asked;
    for (const char name : recorded["asked"]) {
      asked.push_back(Question(kKnownSha1, 2, {name}, 200));
    }
    Times times;
    for (const std::string& key : recorded.All("recorded")) {
      times.emplace_back(key, kNow);
    }
    EXPECT_EQ(run.Received(), asked) << recorded.Name();
    EXPECT_EQ(run.Recorded(), times) << recorded.Name();
  }
}

// What was not answered counts as handled.
TEST(SampleReports, FileThatWasNotSentDoesNotKeepTheTime) {
  JobRun run("status-500");
  run.policydb.documents[0] =
      R"([{"ts": 1795565520, "fid": -1, "detail": {"pathname": "C:\\s\\A"}}])";
  AddFiles(run, "A");
  SampleReports(run.Get(), nullptr);
  EXPECT_EQ(run.Received(), Steps{Question(kKnownSha1, 2, "A", 500)});
  EXPECT_EQ(run.Recorded(), (Times{{"rpttm_sf", kNow}}));
}

// Runs the reports of a run in which the quarantine alone is due.
void RunQuarantineJob(JobRun& run, const std::string& instructions) {
  run.Last("rpttm_sf") = run.Last("rpttm_fp") = kNow;
  run.Last("rpttm_qf") = kNow - 100000;
  const JsonOwner wishes(json_loads(instructions.c_str(), 0, nullptr));
  SampleReports(run.Get(), wishes.Get());
}

TEST(QuarantineJob, SendsWhatTheServerWants) {
  const RecordedCase recorded = CasesOf("quarantine_job").at(0);
  JobRun run;
  run.policydb.quarantine = recorded["list"];
  const size_t sizes[] = {2000, 2000, 2000, 2000, 1023, 1024, 5242880, 5242881, 0, 2000, 2000};
  for (size_t i = 0; i < std::size(sizes); ++i) {
    run.policydb.held[static_cast<int64_t>(i) + 1] = std::string(sizes[i], 'q');
  }
  run.policydb.restoreResult = -1;  // any but 0 is success
  RunQuarantineJob(run, recorded["instructions"]);

  Steps expected = {Question(kKnownSha1, 1, "4", 200), Question("05", 1, "5", 404)};
  Append(expected, Sent("06", 1, "6", std::string(1024, 'q')));
  Append(expected, Sent("07", 1, "7", std::string(5242880, 'q')));
  Append(expected, {Question("08", 1, "8", 404), Question("09", 1, "9", 404)});
  Append(expected, Sent("10", 1, "10", std::string(2000, 'q')));
  EXPECT_EQ(run.Received(), expected);
  EXPECT_EQ(run.policydb.restored, (std::vector<int64_t>{5, 6, 7, 8, 9, 10}));
  EXPECT_EQ(run.Recorded(), (Times{{"rpttm_qf", kNow}}));
}

constexpr auto kOneEntry = R"([{"id": 1, "fid": 1, "sha1": "01", "fn": "C:\\s\\1", "vn": "Trojan/A",
                                "ts": 1795565520}])";
constexpr auto kThree = R"({"samples": {"quarantine": {"cnt": 3}}})";

TEST(QuarantineJob, NeedsAListAndInstructions) {
  const struct {
    const char* what;
    std::optional<std::string> list;
    const char* instructions;
    bool isRecorded;
  } cases[] = {
      {"does not open", std::nullopt, kThree, false},
      {"gives no list", "no list", kThree, false},
      {"no instructions", "[]", "[]", false},
      {"no count", "[]", R"({"samples": {"quarantine": {"vnflt": []}}})", false},
      {"count is text", "[]", R"({"samples": {"quarantine": {"cnt": "3"}}})", false},
      {"nothing wanted", kOneEntry, R"({"samples": {"quarantine": {"cnt": 0}}})", true},
  };
  for (const auto& [what, list, instructions, isRecorded] : cases) {
    JobRun run;
    run.policydb.quarantine = list;
    RunQuarantineJob(run, instructions);
    EXPECT_EQ(run.Received(), Steps()) << what;
    EXPECT_EQ(run.Recorded(), isRecorded ? (Times{{"rpttm_qf", kNow}}) : Times()) << what;
  }
}

// The file is asked about, cannot be had or sent, and is not tried again.
TEST(QuarantineJob, FileThatCannotBeSent) {
  const std::string content(2000, 'q');
  const Steps sent = Sent("01", 1, "1", content);
  const struct {
    const char* what;
    void (*damage)(JobRun&);
    Steps steps;
    const char* fault = "none";
  } cases[] = {
      {"not restored", [](JobRun& run) { run.policydb.restoreResult = 0; }, {sent[0]}},
      {"no stream", [](JobRun& run) { run.svclink.createsNothing = true; }, {sent[0]}},
      {"stream not opened", [](JobRun& run) { run.svclink.openResult = -1; }, {sent[0]}},
      {"without size", [](JobRun& run) { run.svclink.hasNoSize = true; }, {sent[0]}},
      {"without read", [](JobRun& run) { run.svclink.hasNoRead = true; }, {sent[0]}},
      {"size fails", [](JobRun& run) { run.svclink.sizeMore = -2001; }, {sent[0]}},
      {"read fails", [](JobRun& run) { run.svclink.readLess = 2001; }, {sent[0]}},
      {"read is short", [](JobRun& run) { run.svclink.readLess = 1; }, {sent[0]}},
      {"shorter than its size", [](JobRun& run) { run.svclink.sizeMore = 1; }, {sent[0]}},
      {"no ticket", [](JobRun&) {}, {sent[0], sent[1]}, "no-url"},
      {"upload fails", [](JobRun&) {}, sent, "put-cut"},
      {"no answer", [](JobRun&) {}, {Question("01", 1, "1", 500)}, "status-500"},
  };
  for (const auto& [what, damage, steps, fault] : cases) {
    JobRun run(fault);
    run.policydb.quarantine = kOneEntry;
    run.policydb.held[1] = content;
    damage(run);
    RunQuarantineJob(run, kThree);
    EXPECT_EQ(run.Received(), steps) << what;
    EXPECT_EQ(run.Recorded(), (Times{{"rpttm_qf", kNow}})) << what;
  }
}

}  // namespace
}  // namespace ostrell
