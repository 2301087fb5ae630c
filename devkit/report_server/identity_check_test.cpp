#include "devkit/report_server/identity_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "devkit/report_server/request_summary.h"
#include "devkit/report_server/request_target.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

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
  const RecordedCase cases(OSTRELL_SERVER_CASES "/identity.case");
  for (size_t i = 0; i < cases.All("request").size(); ++i) {
    const std::string rc1 = cases.All("rc1").at(i);
    const JsonOwner line = Line(cases.All("request")[i]);
    const JsonOwner information = rc1 == "none" ? JsonOwner() : Line("/v8/rc1.php?" + rc1);
    const std::string wrong =
        WrongIdentity(line.Get(), json_object_get(information.Get(), "query"));
    EXPECT_EQ(wrong.empty() ? "none" : wrong, cases.All("wrong").at(i)) << CompactText(line);
  }
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
  EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::HasSubstr("WRONG: regid\n"));
  EXPECT_THAT(verdict.misnaming, testing::ElementsAre("rc5", "rc7"));
}

}  // namespace
}  // namespace ostrell
