#include "transport/http.h"

#include "tests/support/expect_recorded.h"

namespace ostrell {
namespace {

TEST(HttpUrl, RecordedCases) {
  ExpectRecorded("http_url", [](const std::string& url, const auto&) {
    return IsHttpUrl(url.c_str()) ? "yes" : "no";
  });
}

// Other schemes are refused by the transfer itself too, whoever hands the URL over. At the last one
// nobody listens.
TEST(Http, FailedTransferHasNeitherAnswerNorStatus) {
  for (const char* const url :
       {"file:///etc/passwd", "file:///C:/windows/win.ini", "http://127.0.0.1:1/"}) {
    ByteChain answer;
    int32_t status = -1;
    EXPECT_EQ(GetToChain(url, answer, &status), 0) << url;
    EXPECT_EQ(answer.Total(), 0u) << url;
    EXPECT_EQ(status, -1) << url;
  }
}

// A list that is searched for its end at every line would not be ready within the hour.
TEST(Http, ManyHeaderLinesCostLinearTime) {
  const std::vector<std::string> lines(1000000, "X-A: b");
  ByteChain body;
  int32_t status = -1;
  EXPECT_FALSE(HttpPut("http://127.0.0.1:1/", lines, body, nullptr, &status));
  EXPECT_EQ(status, -1);
}

}  // namespace
}  // namespace ostrell
