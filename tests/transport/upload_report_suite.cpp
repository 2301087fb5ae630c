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

std::string BodyToSend(const RecordedCase& recorded) {
  return recorded.Has("random bytes") ? RandomBody(recorded.Number("random bytes"))
         : recorded.Has("squares")    ? SquaresBody(recorded.Number("squares"))
                                      : recorded["body"];
}

void CheckPut(ReceivedRequest& put, ReceivedRequest& get, const RecordedCase& recorded,
              const std::string& fault) {
  const std::string body = BodyToSend(recorded);
  EXPECT_EQ(put["target"], (fault.empty() ? "" : "/fault/" + fault) + "/put/" + get["ticket"]);
  const bool hasLines = !recorded.Has("no lines");
  EXPECT_EQ(put["header names"],
            hasLines ? "Accept, Content-Length, Content-Type, Expect, Host, X-Ostrell-Ticket"
                     : "Accept, Content-Length, Expect, Host");
  EXPECT_EQ(put["headers.X-Ostrell-Ticket"], hasLines ? put["ticket"] : "");
  EXPECT_EQ(put["headers.Content-Type"], hasLines ? "application/octet-stream" : "");
  EXPECT_EQ(put["headers.Content-Length"], put["packed"]);
  EXPECT_EQ(put["unpacked"], std::to_string(body.size()));
  EXPECT_EQ(put["zlib"], "ok");
  EXPECT_TRUE(BodyOf(put) == body || body.size() > 100);
}

// A case without a status is of transfers that fail.
TEST(UploadReport, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("upload_report")) {
    const std::string body = BodyToSend(recorded);
    for (const std::string& fault : recorded.All("fault")) {
      SCOPED_TRACE(recorded.Name() + " " + fault);
      const std::string token = FreshToken();
      std::string url = ReportUrlOf("rc2", token, fault);
      if (recorded.Has("length")) {
        (url += "&fill=").resize(recorded.Number("length"), 'x');
      }
      int32_t status = kUntouched;
      testing::internal::CaptureStdout();
      const int32_t result = Upload(url, body, nullptr, &status);
      EXPECT_TRUE(testing::internal::GetCapturedStdout().empty()) << "the answer is printed";
      EXPECT_EQ(result, recorded.Has("status") ? 1 : 0);
      EXPECT_EQ(status, recorded.Has("status") ? recorded.Number("status") : kUntouched);
      auto requests = RequestsWith("regid", token);
      ASSERT_EQ(StepsOf(requests), recorded["steps"]);
      EXPECT_EQ(requests.back()["digest"], recorded["digest"]);
      EXPECT_EQ(requests[0]["header names"], "Accept, Host");
      if (fault.empty()) {
        EXPECT_EQ(TestServerUrl() + requests[0]["target"],
                  (url + "&o=" + DigestOf(body)).substr(0, 1023));
      }
      if (requests.size() == 2) {
        CheckPut(requests[1], requests[0], recorded, fault);
      }
    }
  }
}

TEST(UploadReport, AnswerToThePutGoesToTheSinkUpToItsLimit) {
  ByteChain answer;
  EXPECT_EQ(Upload(ReportUrlOf("rc2", FreshToken()), "[]", &answer), 1);
  EXPECT_EQ(answer.Total(), std::string_view(R"({"received":true})").size());

  ByteChain sink(100000);
  int32_t status = kUntouched;
  EXPECT_EQ(Upload(ReportUrlOf("rc2", FreshToken(), "put-endless"), "[]", &sink, &status), 0);
  EXPECT_EQ(status, kUntouched);
  EXPECT_LE(sink.Total(), 100000u);
  EXPECT_GT(sink.Total(), 50000u);
}

TEST(UploadReport, UrlWithoutQueryGetsOne) {
  const std::string body = FreshToken();
  EXPECT_EQ(Upload(TestServerUrl() + "/v8/rc4.php", body), 1);
  auto requests = RequestsWith("o", DigestOf(body));
  ASSERT_EQ(StepsOf(requests), "GET 200, PUT 200");
  EXPECT_EQ(requests[0]["target"], "/v8/rc4.php?o=" + DigestOf(body));
}

}  // namespace
}  // namespace ostrell
