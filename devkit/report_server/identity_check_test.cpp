#include "devkit/report_server/identity_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "devkit/report_server/request_summary.h"

namespace ostrell {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr auto kMachine = "0123456789ABCDEF0123456789ABCDEF00000500";
constexpr auto kGuid = "0A1B2C3D-4E5F-6789-ABCD-EF0123456789";
constexpr auto kBraced = "{0A1B2C3D-4E5F-6789-ABCD-EF0123456789}";

using Query = std::map<std::string, std::string>;

JsonOwner Line(const char* report, const Query& query) {
  JsonOwner values(json_object());
  for (const auto& [key, value] : query) {
    json_object_set_new(values.Get(), key.c_str(), json_string(value.c_str()));
  }
  return JsonOwner(
      json_pack("{s:s, s:s, s:o}", "report", report, "method", "GET", "query", values.Release()));
}

TEST(WrongIdentity, NamesWhatIsNotOfItsFormOrNotThatOfTheMachineInformation) {
  const Query machine = {{"u", kMachine}, {"regid", kGuid}};
  const Query other = {{"u", "F" + std::string(kMachine + 1)}, {"regid", kBraced}};
  const struct {
    const char* report;
    Query query;
    const Query* machineInformation;  // null: there is none
    const char* wrong;
  } cases[] = {
      {"rc2", machine, &machine, ""},
      {"rc2", machine, nullptr, ""},
      {"rc3", {{"u", kMachine}, {"regid", kBraced}}, nullptr, ""},
      {"rc3", machine, &other, "u regid"},
      {"rc5", {{"u", kGuid}, {"regid", kMachine}}, nullptr, "u regid"},
      {"rc5", {}, &machine, "u regid"},
      {"rc5", {}, nullptr, "u regid"},
      {"rc7", {{"u", std::string(kMachine, 39)}, {"regid", kGuid}}, nullptr, "u"},
      {"rc7", {{"u", kMachine + std::string("0")}, {"regid", kGuid}}, nullptr, "u"},
      {"rc7", {{"u", "f" + std::string(kMachine + 1)}, {"regid", kGuid}}, nullptr, "u"},
      {"rc7", {{"u", kMachine}, {"regid", std::string("{") + kGuid}}, nullptr, "regid"},
      {"rc7", {{"u", kMachine}, {"regid", kGuid + std::string("}")}}, nullptr, "regid"},
      {"rc7", {{"u", kMachine}, {"regid", std::string(kGuid, 35)}}, nullptr, "regid"},
      {"rc7", {{"u", kMachine}, {"regid", "0" + std::string(kGuid)}}, nullptr, "regid"},
      {"rc7", {{"u", kMachine}, {"regid", kMachine}}, nullptr, "regid"},
      {"rc4", {{"u", kMachine}, {"regid", kGuid}, {"v", "5"}}, &machine, ""},
      {"rc4", {{"u", kMachine}, {"regid", kGuid}, {"v", "55"}}, &machine, "v"},
      {"rc4", machine, &machine, "v"},
      {"rc1", {{"u", kMachine}, {"regid", kGuid}, {"v", "6.0.3.27"}}, nullptr, ""},
  };
  for (const auto& [report, query, machineInformation, wrong] : cases) {
    const JsonOwner line = Line(report, query);
    const JsonOwner information =
        machineInformation != nullptr ? Line("rc1", *machineInformation) : JsonOwner(nullptr);
    EXPECT_EQ(WrongIdentity(line.Get(), json_object_get(information.Get(), "query")), wrong)
        << report << " " << testing::PrintToString(query);
  }
}

// Each run's requests are held against its own rc1, those before the first one against that.
TEST(WrongIdentity, IsShownAndKeptWithTheReport) {
  const Query first = {{"u", kMachine}, {"regid", kBraced}};
  const Query second = {{"u", kMachine}, {"regid", kGuid}};
  std::vector<JsonOwner> requests;
  const auto add = [&](const char* report, const Query& query) {
    requests.push_back(Line(report, query));
  };
  add("rc7", second);
  add("rc1", first);
  add("rc2", first);
  add("", {});
  add("rc1", second);
  add("rc2", second);
  add("rc5", first);
  testing::internal::CaptureStdout();
  const ReportVerdict verdict = PrintRequests(requests, "");
  EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr("WRONG: regid\n"));
  EXPECT_THAT(verdict.misnaming, ElementsAre("rc5", "rc7"));
}

}  // namespace
}  // namespace ostrell
