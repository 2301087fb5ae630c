#include "devkit/report_server/sample_summary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "devkit/report_server/private_folder.h"
#include "devkit/report_server/request_summary.h"

namespace ostrell {
namespace {

using testing::HasSubstr;

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
  size_t index = 0;
  const json_t* recorded = nullptr;
  json_array_foreach(json_object_get(Data().Get(), "cases"), index, recorded) {
    SCOPED_TRACE(index);
    std::vector<JsonOwner> requests;
    size_t at = 0;
    const json_t* text = nullptr;
    json_array_foreach(json_object_get(recorded, "requests"), at, text) {
      requests.emplace_back(json_incref(
          json_object_get(json_object_get(Data().Get(), "requests"), json_string_value(text))));
    }
    const DataFolder before(json_object_get(recorded, "times"));
    const ExpectedRun expected = Expected(recorded, before);
    testing::internal::CaptureStdout();
    EXPECT_EQ(PrintSamples(expected, requests), json_is_true(json_object_get(recorded, "sound")));
    std::string said = testing::internal::GetCapturedStdout();
    for (const json_t* row : expected.Reports()) {
      said += expected.WhyNotDue(row) + "\n";
    }
    json_array_foreach(json_object_get(recorded, "says"), at, text) {
      EXPECT_THAT(said, HasSubstr(json_string_value(text)));
    }
    EXPECT_THAT(said, HasSubstr("cc: there is no tallyx5.dat\n"));
  }
}

TEST(SampleSummary, FirstReportHoldsWhatIsExpected) {
  size_t index = 0;
  const json_t* recorded = nullptr;
  json_array_foreach(json_object_get(Data().Get(), "bodies"), index, recorded) {
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
