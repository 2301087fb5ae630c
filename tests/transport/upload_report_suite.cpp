#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "tests/support/server_record.h"
#include "tests/support/test_bodies.h"
#include "transport/pack_body.h"
#include "transport/upload_report.h"

// UploadReport against a running report server: what it returns, and what the server received.

namespace ostrell {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

using Steps = std::vector<std::string>;

constexpr std::string_view kBody = R"([{"n":1},{"n":2},{"n":3}])";

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

  const auto requests = RequestsWith("regid", token);
  ASSERT_THAT(StepsOf(requests), ElementsAre("GET 200", "PUT 200"));
  EXPECT_THAT(HeaderNamesOf(requests[0]), ElementsAre("Accept", "Host"));
  EXPECT_EQ(requests[0].target, "/v8/rc2.php?u=U&regid=" + token + "&o=" + DigestOf(kBody));

  const ReceivedRequest& put = requests[1];
  EXPECT_THAT(HeaderNamesOf(put), ElementsAre("Accept", "Content-Length", "Content-Type", "Expect",
                                              "Host", "X-Ostrell-Ticket"));
  EXPECT_EQ(put.target, "/put/" + std::to_string(requests[0].ticket));
  EXPECT_EQ(put.headers.at("X-Ostrell-Ticket"), std::to_string(put.ticket));
  EXPECT_EQ(put.headers.at("Content-Type"), "application/octet-stream");
  EXPECT_EQ(put.headers.at("Content-Length"), std::to_string(put.packed));
  EXPECT_EQ(put.unpacked, kBody.size());
  EXPECT_EQ(put.digest, "ok");
  EXPECT_EQ(put.json, "ok");
  EXPECT_EQ(put.items, 3);
}

TEST(UploadReport, AnswersToTheTicketRequest) {
  const Steps kAskedOnly = {"GET 200"};
  const Steps kSent = {"GET 200", "PUT 200"};
  const struct {
    const char* fault;
    int32_t result;
    Steps steps;
  } kCases[] = {
      {"status-404", 1, {"GET 404", "PUT 200"}},
      {"status-500", 1, {"GET 500", "PUT 200"}},
      {"empty-header", 1, kSent},
      {"header-object", 1, kSent},
      {"header-number", 0, kAskedOnly},
      {"header-crlf", 0, kAskedOnly},
      {"no-header", 0, kAskedOnly},
      {"no-url", 0, kAskedOnly},
      {"ftp-url", 0, kAskedOnly},
      {"file-url", 0, kAskedOnly},
      {"bare-url", 0, kAskedOnly},
      {"garbage", 0, kAskedOnly},
      {"cut", 0, kAskedOnly},
      {"endless", 0, kAskedOnly},
      {"big", 0, kAskedOnly},
      {"redirect", 0, {"GET 302"}},
  };
  for (const auto& testCase : kCases) {
    SCOPED_TRACE(testCase.fault);
    const std::string token = FreshToken();
    EXPECT_EQ(Upload(ReportUrlOf("rc2", token, testCase.fault), kBody), testCase.result);
    const auto requests = RequestsWith("regid", token);
    ASSERT_THAT(StepsOf(requests), ElementsAreArray(testCase.steps));
    if (testCase.steps == kSent) {
      EXPECT_THAT(HeaderNamesOf(requests[1]),
                  ElementsAre("Accept", "Content-Length", "Expect", "Host"));
    }
  }
  EXPECT_FALSE(std::filesystem::exists("/tmp/ostrell-file-url-fault"));
}

TEST(UploadReport, AnswersToThePut) {
  constexpr int32_t kUntouched = -1;
  const struct {
    const char* fault;
    int32_t result;
    int32_t status;
    const char* step;
  } kCases[] = {
      {"put-404", 1, 404, "PUT 404"},
      {"put-500", 1, 500, "PUT 500"},
      {"put-302", 1, 302, "PUT 302"},
      {"put-cut", 0, kUntouched, "PUT 200"},
      // Read on and discarded; the server breaks it off after 64 MiB.
      {"put-endless", 0, kUntouched, "PUT 200"},
  };
  for (const auto& testCase : kCases) {
    SCOPED_TRACE(testCase.fault);
    const std::string token = FreshToken();
    int32_t status = kUntouched;
    testing::internal::CaptureStdout();
    const int32_t result =
        Upload(ReportUrlOf("rc2", token, testCase.fault), kBody, nullptr, &status);
    EXPECT_TRUE(testing::internal::GetCapturedStdout().empty()) << "the answer is printed";
    EXPECT_EQ(result, testCase.result);
    EXPECT_EQ(status, testCase.status);
    const auto requests = RequestsWith("regid", token);
    ASSERT_THAT(StepsOf(requests), ElementsAre("GET 200", testCase.step));
    EXPECT_EQ(requests[1].digest, "ok");
  }
}

TEST(UploadReport, SinkLimitEndsAnEndlessAnswerToThePut) {
  ByteChain sink(100000);
  int32_t status = -1;
  EXPECT_EQ(Upload(ReportUrlOf("rc2", FreshToken(), "put-endless"), kBody, &sink, &status), 0);
  EXPECT_EQ(status, -1);
  EXPECT_LE(sink.Total(), 100000u);
  EXPECT_GT(sink.Total(), 50000u);
}

TEST(UploadReport, Bodies) {
  // Nothing, 1 MiB that does not compress, more than 20 MiB that does.
  for (const std::string& body : {std::string(), RandomBody(1 << 20), SquaresBody(700000)}) {
    SCOPED_TRACE(body.size());
    const std::string token = FreshToken();
    EXPECT_EQ(Upload(ReportUrlOf("rc4", token), body), 1);
    const auto requests = RequestsWith("regid", token);
    ASSERT_THAT(StepsOf(requests), ElementsAre("GET 200", "PUT 200"));
    EXPECT_EQ(requests[1].unpacked, body.size());
    EXPECT_EQ(requests[1].digest, "ok");
    EXPECT_EQ(requests[1].zlib, "ok");
  }
}

TEST(UploadReport, UrlWithoutQueryGetsOne) {
  const std::string body = FreshToken();
  EXPECT_EQ(Upload(TestServerUrl() + "/v8/rc4.php", body), 1);
  const auto requests = RequestsWith("o", DigestOf(body));
  ASSERT_THAT(StepsOf(requests), ElementsAre("GET 200", "PUT 200"));
  EXPECT_EQ(requests[0].target, "/v8/rc4.php?o=" + DigestOf(body));
}

TEST(UploadReport, TicketUrlIsSentCutAt1023Bytes) {
  constexpr size_t kFits = 1023 - 3 - 32;  // "&o=" and the digest
  const struct {
    size_t length;
    int32_t result;
    Steps steps;
    const char* digest;
  } kCases[] = {
      {kFits, 1, {"GET 200", "PUT 200"}, "ok"},
      {kFits + 1, 1, {"GET 200", "PUT 200"}, "mismatch"},
      {kFits + 31, 1, {"GET 200", "PUT 200"}, "mismatch"},
      {2000, 0, {"GET 400"}, ""},  // no room for a digest, so no ticket
  };
  for (const auto& testCase : kCases) {
    SCOPED_TRACE(testCase.length);
    const std::string token = FreshToken();
    std::string url = ReportUrlOf("rc4", token) + "&fill=";
    url.resize(testCase.length, 'x');
    EXPECT_EQ(Upload(url, kBody), testCase.result);
    const auto requests = RequestsWith("regid", token);
    ASSERT_THAT(StepsOf(requests), ElementsAreArray(testCase.steps));
    const std::string whole = url + "&o=" + DigestOf(kBody);
    EXPECT_EQ(TestServerUrl() + requests[0].target, whole.substr(0, 1023));
    EXPECT_EQ(requests.back().digest, testCase.digest);
  }
}

}  // namespace
}  // namespace ostrell
