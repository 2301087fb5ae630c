#include "devkit/report_server/sample_summary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "devkit/report_server/identity_check.h"
#include "devkit/report_server/private_folder.h"
#include "devkit/report_server/request_summary.h"
#include "devkit/report_server/request_target.h"
#include "tests/support/expect_recorded.h"

namespace ostrell {
namespace {

using testing::HasSubstr;

JsonOwner Line(const std::string& request) {
  const RequestTarget target = ParseRequestTarget(request);
  JsonOwner line(json_pack("{s:s, s:s, s:{}}", "report", ReportOfPath(target.path).c_str(),
                           "method", "GET", "query"));
  for (const auto& [key, value] : target.query) {
    json_object_set_new(json_object_get(line.Get(), "query"), key.c_str(),
                        json_string(value.c_str()));
  }
  return line;
}

TEST(WrongIdentity, RecordedCases) {
  ExpectRecorded("server_identity", [](const std::string& input, const RecordedCase&) {
    const size_t blank = input.find(' ');
    const std::string rc1 = input.substr(blank + 1);
    const JsonOwner line = Line(input.substr(0, blank));
    const JsonOwner information = rc1 == "none" ? JsonOwner() : Line("/v8/rc1.php?" + rc1);
    const std::string wrong =
        WrongIdentity(line.Get(), json_object_get(information.Get(), "query"));
    return wrong.empty() ? "none" : wrong;
  });
}

// Each run's requests are held against its own rc1, those before the first one against that.
TEST(WrongIdentity, IsShownAndKeptWithTheReport) {
  const std::string machine = ".php?u=0123456789ABCDEF0123456789ABCDEF00000500&regid=";
  const std::string first = machine + "{0A1B2C3D-4E5F-6789-ABCD-EF0123456789}";
  const std::string second = machine + "0A1B2C3D-4E5F-6789-ABCD-EF0123456789";
  std::vector<JsonOwner> requests;
  for (const std::string& request :
       {"/v8/rc7" + second, "/v8/rc1" + first, "/v8/rc2" + first, "/x" + first, "/v8/rc1" + second,
        "/v8/rc2" + second, "/v8/rc5" + first}) {
    requests.push_back(Line(request));
  }
  testing::internal::CaptureStdout();
  const ReportVerdict verdict = PrintRequests(requests, "", ExpectedRun({}, "", 0));
  EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr("WRONG: regid\n"));
  EXPECT_THAT(verdict.misnaming, testing::ElementsAre("rc5", "rc7"));
}

// The product's data folder before a run, whose last-report times are in the settings.
class DataFolder : public PrivateFolder {
 public:
  explicit DataFolder(json_t* times) {
    std::filesystem::create_directory(Path() / "settings");
    const JsonOwner settings(json_pack("{s:o?}", "int64", json_incref(times)));
    std::ofstream(Path() / "settings/ostrell.json") << CompactText(settings);
  }
};

// The lines that a run is judged by, and the cases: what was requested, and what is said of it.
const JsonOwner& Data() {
  static const JsonOwner data(
      json_load_file(OSTRELL_SERVER_CASES "/sample_summary.json", 0, nullptr));
  return data;
}

ExpectedRun Expected(const json_t* recorded, const DataFolder& before) {
  const int64_t now = Integer64Member(Data().Get(), "now").value();
  return {JsonOwner(json_incref(json_object_get(Data().Get(), "expected"))), before.Path(),
          Integer64Member(recorded, "now").value_or(now)};
}

TEST(SampleSummary, RecordedCases) {
  for (json_t* recorded : Elements(json_object_get(Data().Get(), "cases"))) {
    SCOPED_TRACE(CompactText(JsonOwner(json_incref(recorded))));
    std::vector<JsonOwner> requests;
    for (const json_t* text : Elements(json_object_get(recorded, "requests"))) {
      requests.emplace_back(json_incref(
          json_object_get(json_object_get(Data().Get(), "requests"), json_string_value(text))));
    }
    const DataFolder before(json_object_get(recorded, "times"));
    const ExpectedRun expected = Expected(recorded, before);
    testing::internal::CaptureStdout();
    const JsonOwner notSent(json_array());
    EXPECT_EQ(PrintSamples(expected, requests, notSent.Get()),
              json_is_true(json_object_get(recorded, "sound")));
    std::string said = testing::internal::GetCapturedStdout();
    for (const json_t* row : expected.Reports()) {
      said += expected.WhyNotDue(row) + "\n";
    }
    for (const json_t* text : Elements(json_object_get(recorded, "says"))) {
      EXPECT_THAT(said, HasSubstr(json_string_value(text)));
    }
    EXPECT_THAT(said, HasSubstr("cc: there is no tallyx5.dat\n"));
  }
}

TEST(SampleSummary, FirstReportHoldsWhatIsExpected) {
  for (const json_t* recorded : Elements(json_object_get(Data().Get(), "bodies"))) {
    const DataFolder folder(json_object_get(recorded, "times"));
    json_dump_file(json_object_get(recorded, "body"), (folder.Path() / "0007.body").c_str(), 0);
    std::vector<JsonOwner> requests;
    requests.emplace_back(
        json_pack("{s:s, s:s, s:i}", "report", "rc2", "method", "PUT", "number", 7));
    testing::internal::CaptureStdout();
    const ReportVerdict verdict = PrintRequests(requests, folder.Path(), Expected(nullptr, folder));
    EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr(TextOf(recorded, "says")));
    EXPECT_EQ(verdict.differing.empty(), json_is_true(json_object_get(recorded, "sound")));
  }
}

}  // namespace
}  // namespace ostrell
