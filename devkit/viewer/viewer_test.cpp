#include "devkit/viewer/viewer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include <regex>
#include <string>
#include <vector>

#include "devkit/viewer/tail.h"
#include "tests/support/kept_uploads.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ViewerTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string why;
    ASSERT_TRUE(viewer.Start(0, &why)) << why;
  }

  void AddUpload(const std::string& report, const std::string& body,
                 const QueryValues& query = {}) {
    KeptUpload{.report = report, .packed = Packed(body), .query = query}.AddTo(server);
  }

  httplib::Response Send(const std::string& method, const std::string& path,
                         const httplib::Headers& headers = {}, const std::string& body = "") {
    httplib::Client client(viewer.Url());
    httplib::Request request;
    request.method = method;
    request.path = path;
    request.headers = headers;
    request.body = body;
    const httplib::Result result = client.send(request);
    return result ? *result : httplib::Response();
  }
  std::string Get(const std::string& path) { return Send("GET", path).body; }

  ReportServer server{{.port = 0}};
  Viewer viewer{server};
};

// A page of the open web can neither read nor change anything, under whatever name it reached this
// machine.
TEST_F(ViewerTest, ForeignRequestsAreRefused) {
  const std::string port = viewer.Url().substr(viewer.Url().rfind(':'));
  struct Case {
    const char* method;
    httplib::Headers headers;
    int status;
  };
  const httplib::Headers json = {{"Content-Type", "application/json"}};
  const Case kCases[] = {
      {"GET", {}, 200},
      {"GET", {{"Host", "localhost" + port}}, 200},
      {"GET", {{"Host", "127.0.0.1"}}, 403},
      {"GET", {{"Host", "attacker.example" + port}}, 403},
      {"GET", {{"Host", "127.0.0.1.attacker.example" + port}}, 403},
      {"GET", {{"Sec-Fetch-Site", "same-origin"}}, 200},
      {"GET", {{"Sec-Fetch-Site", "none"}}, 200},
      {"GET", {{"Sec-Fetch-Site", "same-site"}}, 403},
      {"GET", {{"Sec-Fetch-Site", "cross-site"}}, 403},
      {"DELETE", json, 200},
      {"DELETE", {}, 415},
      {"DELETE", {{"Content-Type", "text/plain"}}, 415},
      {"DELETE", {{"Content-Type", "application/json"}, {"Host", "attacker.example"}}, 403},
      {"DELETE", {{"Content-Type", "application/json"}, {"Sec-Fetch-Site", "cross-site"}}, 403},
  };
  for (const Case& foreign : kCases) {
    server.Faults().Set(Fault::kCut);
    EXPECT_EQ(Send(foreign.method, "/api/faults", foreign.headers).status, foreign.status);
    EXPECT_EQ(server.Faults().All().size(),
              foreign.status == 200 && std::string(foreign.method) == "DELETE" ? 0U : 1U);
  }
}

TEST_F(ViewerTest, BodiesAreAttachmentsAndThePageRunsItsOwnScriptsOnly) {
  AddUpload("rc3", "<script>alert(1)</script>");
  for (const char* path : {"/api/requests/1/body", "/api/requests/1/packed"}) {
    const httplib::Response answer = Send("GET", path);
    EXPECT_EQ(answer.get_header_value("Content-Security-Policy"), "default-src 'none'; sandbox");
    EXPECT_EQ(answer.get_header_value("Content-Type"), "application/octet-stream");
    EXPECT_EQ(answer.get_header_value("X-Content-Type-Options"), "nosniff");
    EXPECT_THAT(answer.get_header_value("Content-Disposition"), StartsWith("attachment;"));
  }
  EXPECT_EQ(Get("/api/requests/1/body"), "<script>alert(1)</script>");
  EXPECT_EQ(Get("/api/requests/1/packed"), Packed("<script>alert(1)</script>"));
  AddUpload("rc4", "");
  EXPECT_EQ(Send("GET", "/api/requests/2/body").status, 200);
  EXPECT_EQ(Get("/api/requests/2/body"), "");
  const std::string policy = Send("GET", "/").get_header_value("Content-Security-Policy");
  for (const char* part : {"default-src 'none'", "script-src 'self'", "base-uri 'none'",
                           "require-trusted-types-for 'script'", "trusted-types 'none'"}) {
    EXPECT_THAT(policy, HasSubstr(part));
  }
  EXPECT_THAT(policy, Not(HasSubstr("unsafe")));
  EXPECT_EQ(Send("GET", "/page/main.js").get_header_value("Content-Type"),
            "text/javascript; charset=utf-8");
  EXPECT_EQ(Send("GET", "/page/../viewer.h").status, 404);
}

// An entry's place in the inventory is not looked at, only whether there is one.
std::string WithoutPlaces(const std::string& answer) {
  return std::regex_replace(answer, std::regex(R"("entry":\d+)"), R"("entry":N)");
}

// What each call says of the bodies.
TEST_F(ViewerTest, RecordedCalls) {
  const RecordedCase cases(OSTRELL_VIEWER_CASES "/calls.case");
  const auto reports = cases.All("report");
  for (size_t i = 0; i < reports.size(); ++i) {
    AddUpload(reports[i], cases.All("body").at(i), DecodeQuery(cases.All("query").at(i)));
  }
  const auto calls = cases.All("call");
  for (size_t i = 0; i < calls.size(); ++i) {
    EXPECT_EQ(WithoutPlaces(Get(calls[i])), cases.All("answer").at(i)) << calls[i];
  }
}

TEST_F(ViewerTest, FaultsAreSetByJson) {
  const httplib::Headers json = {{"Content-Type", "application/json"}};
  const auto set = [&](const char* name, const char* how) {
    return Send("PUT", std::string("/api/faults/") + name, json, how).status;
  };
  EXPECT_EQ(set("cut", R"({"report":"rc2","after":1,"times":2,"probability":0.5,"seed":7})"), 200);
  const auto states = server.Faults().All();
  const FaultSwitch& how = states.at(Fault::kCut).how;
  EXPECT_EQ(how.report, "rc2");
  EXPECT_EQ(how.after, 1U);
  EXPECT_EQ(how.times, 2U);
  EXPECT_EQ(how.probability, 0.5);
  EXPECT_EQ(how.seed, 7U);
  EXPECT_THAT(
      Get("/api/faults"),
      HasSubstr(
          R"("name":"cut","help":"good answer, cut before its promised length","isOn":true,"report":"rc2","probability":0.5,"after":1,"seed":7,"concerned":0,"acted":0,"times":2})"));
  for (const char* wrong : {"[]", "no", R"({"times":-1})", R"({"time":1})", R"({"report":1})"}) {
    EXPECT_EQ(set("cut", wrong), 400) << wrong;
  }
  EXPECT_EQ(set("none", "{}"), 404);
  EXPECT_EQ(Send("DELETE", "/api/faults/cut", json).status, 200);
  EXPECT_TRUE(server.Faults().All().empty());
}

TEST_F(ViewerTest, RequestsAreClearedAndRunsAnnotated) {
  const httplib::Headers json = {{"Content-Type", "application/json"}};
  AddUpload("rc2", "[]");
  const std::string rows = R"([{"report":"rc4","what":"no file","why":"not due"}])";
  EXPECT_EQ(Send("PUT", "/api/runs/1/not_sent", json, rows).status, 200);
  EXPECT_EQ(Send("PUT", "/api/runs/2/not_sent", json, rows).status, 404);
  EXPECT_EQ(Send("PUT", "/api/runs/1/not_sent", json, "{}").status, 400);
  EXPECT_THAT(Get("/api/changes?after=0&wait=0"),
              AllOf(HasSubstr("\"not_sent\":" + rows), HasSubstr("\"oldest\":1,")));
  EXPECT_EQ(Send("DELETE", "/api/requests", json).status, 200);
  EXPECT_THAT(Get("/api/changes?after=0&wait=0"), HasSubstr("\"oldest\":2,\"requests\":[]"));
  EXPECT_EQ(Send("GET", "/api/requests/1").status, 404);
}

TEST_F(ViewerTest, RequestsAreFollowedLineByLine) {
  AddUpload("rc7", "[1, 2]");
  std::vector<std::string> lines;
  const HttpRequest second{.method = "GET", .target = "/x"};
  EXPECT_TRUE(FollowRequests(viewer.Url(), [&](const std::string& line) {
    lines.push_back(line);
    if (lines.size() == 1) {
      server.Log().Add({.request = second, .status = 404, .fault = "cut"});
    }
    return lines.size() < 2;
  }));
  EXPECT_THAT(lines, testing::ElementsAre("     1  run 1    rc7  PUT  200  packed 14, unpacked 6, "
                                          "items 2, digest mismatch, stream ok, JSON ok",
                                          "     2  run 1    -    GET  404  fault cut"));
  viewer.Stop();
  EXPECT_FALSE(FollowRequests(viewer.Url(), [](const std::string&) { return true; }));
}

}  // namespace
}  // namespace ostrell
