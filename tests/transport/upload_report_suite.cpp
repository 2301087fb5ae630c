#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/recorded_cases.h"
#include "tests/support/server_record.h"
#include "tests/support/test_bodies.h"
#include "transport/pack_body.h"
#include "transport/upload_report.h"

// UploadReport against a running report server: what it returns, and what the server received.

namespace ostrell {
namespace {

constexpr std::string_view kBody = R"([{"n":1},{"n":2},{"n":3}])";
constexpr int32_t kUntouched = -1;

int32_t Upload(const std::string& url, std::string_view body, ByteChain* sink = nullptr,
               int32_t* status = nullptr) {
  return UploadReport(url.c_str(), body.data(), static_cast<uint32_t>(body.size()), sink, status);
}

std::string DigestOf(std::string_view body) {
  ByteChain packed;
  std::string digest;
  EXPECT_EQ(PackBody(packed, &digest, body.data(), static_cast<uint32_t>(body.size())), 1);
  return digest;
}

TEST(UploadReport, GoodTicketLeadsToThePutThatItAsksFor) {
  const std::string token = FreshToken();
  int32_t status = 0;
  ByteChain answer;
  EXPECT_EQ(Upload(ReportUrlOf("rc2", token), kBody, &answer, &status), 1);
  EXPECT_EQ(status, 200);
  EXPECT_EQ(answer.Total(), std::string_view(R"({"received":true})").size());

  auto requests = RequestsWith("regid", token);
  ASSERT_EQ(StepsOf(requests), "GET 200, PUT 200");
  EXPECT_EQ(requests[0]["header names"], "Accept, Host");
  EXPECT_EQ(requests[0]["target"], "/v8/rc2.php?u=U&regid=" + token + "&o=" + DigestOf(kBody));

  ReceivedRequest& put = requests[1];
  EXPECT_EQ(put["header names"],
            "Accept, Content-Length, Content-Type, Expect, Host, X-Ostrell-Ticket");
  EXPECT_EQ(put["target"], "/put/" + requests[0]["ticket"]);
  EXPECT_EQ(put["headers.X-Ostrell-Ticket"], put["ticket"]);
  EXPECT_EQ(put["headers.Content-Type"], "application/octet-stream");
  EXPECT_EQ(put["headers.Content-Length"], put["packed"]);
  EXPECT_EQ(put["unpacked"], std::to_string(kBody.size()));
  EXPECT_EQ(put["json"], "ok");
  EXPECT_EQ(put["items"], "3");
}

// A case without a status is of transfers that fail.
TEST(UploadReport, RecordedAnswersOfAFaultyServer) {
  for (const RecordedCase& recorded : CasesOf("faulty_server")) {
    for (const std::string& fault : recorded.All("fault")) {
      SCOPED_TRACE(fault);
      const std::string token = FreshToken();
      int32_t status = kUntouched;
      testing::internal::CaptureStdout();
      const int32_t result = Upload(ReportUrlOf("rc2", token, fault), kBody, nullptr, &status);
      EXPECT_TRUE(testing::internal::GetCapturedStdout().empty()) << "the answer is printed";
      EXPECT_EQ(result, recorded.Has("status") ? 1 : 0);
      EXPECT_EQ(status, recorded.Has("status") ? recorded.Number("status") : kUntouched);
      auto requests = RequestsWith("regid", token);
      ASSERT_EQ(StepsOf(requests), recorded["steps"]);
      EXPECT_EQ(requests.back()["digest"], requests.size() == 2 ? "ok" : "");
      if (recorded.Name() == "ticket_without_lines") {
        EXPECT_EQ(requests[1]["header names"], "Accept, Content-Length, Expect, Host");
      }
    }
  }
}

TEST(UploadReport, SinkLimitEndsAnEndlessAnswerToThePut) {
  ByteChain sink(100000);
  int32_t status = kUntouched;
  EXPECT_EQ(Upload(ReportUrlOf("rc2", FreshToken(), "put-endless"), kBody, &sink, &status), 0);
  EXPECT_EQ(status, kUntouched);
  EXPECT_LE(sink.Total(), 100000u);
  EXPECT_GT(sink.Total(), 50000u);
}

TEST(UploadReport, Bodies) {
  // Nothing, 1 MiB that does not compress, more than 20 MiB that does.
  for (const std::string& body : {std::string(), RandomBody(1 << 20), SquaresBody(700000)}) {
    SCOPED_TRACE(body.size());
    const std::string token = FreshToken();
    EXPECT_EQ(Upload(ReportUrlOf("rc4", token), body), 1);
    auto requests = RequestsWith("regid", token);
    ASSERT_EQ(StepsOf(requests), "GET 200, PUT 200");
    EXPECT_EQ(requests[1]["unpacked"], std::to_string(body.size()));
    EXPECT_EQ(requests[1]["digest"], "ok");
    EXPECT_EQ(requests[1]["zlib"], "ok");
  }
}

TEST(UploadReport, UrlWithoutQueryGetsOne) {
  const std::string body = FreshToken();
  EXPECT_EQ(Upload(TestServerUrl() + "/v8/rc4.php", body), 1);
  auto requests = RequestsWith("o", DigestOf(body));
  ASSERT_EQ(StepsOf(requests), "GET 200, PUT 200");
  EXPECT_EQ(requests[0]["target"], "/v8/rc4.php?o=" + DigestOf(body));
}

TEST(UploadReport, TicketUrlIsSentCutAt1023Bytes) {
  constexpr size_t kFits = 1023 - 3 - 32;  // "&o=" and the digest
  const struct {
    size_t length;
    const char* steps;
    const char* digest;
  } kCases[] = {{kFits, "GET 200, PUT 200", "ok"},
                {kFits + 1, "GET 200, PUT 200", "mismatch"},
                {kFits + 31, "GET 200, PUT 200", "mismatch"},
                {2000, "GET 400", ""}};  // no room for a digest, so no ticket
  for (const auto& testCase : kCases) {
    SCOPED_TRACE(testCase.length);
    const std::string token = FreshToken();
    std::string url = ReportUrlOf("rc4", token) + "&fill=";
    url.resize(testCase.length, 'x');
    EXPECT_EQ(Upload(url, kBody), testCase.length == 2000 ? 0 : 1);
    auto requests = RequestsWith("regid", token);
    ASSERT_EQ(StepsOf(requests), testCase.steps);
    const std::string whole = url + "&o=" + DigestOf(kBody);
    EXPECT_EQ(TestServerUrl() + requests[0]["target"], whole.substr(0, 1023));
    EXPECT_EQ(requests.back()["digest"], testCase.digest);
  }
}

}  // namespace
}  // namespace ostrell
