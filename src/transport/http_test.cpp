#include "transport/http.h"

#include <gtest/gtest.h>

#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

TEST(HttpUrl, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("http_url")) {
    for (const std::string& url : recorded.All("http")) {
      EXPECT_TRUE(IsHttpUrl(url.c_str())) << url;
    }
    for (const std::string& url : recorded.All("other")) {
      EXPECT_FALSE(IsHttpUrl(url.c_str())) << url;
    }
  }
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
