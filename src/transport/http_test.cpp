#include "transport/http.h"

#include <gtest/gtest.h>

#include <string>

namespace ostrell {
namespace {

TEST(HttpUrl, SchemeIsSpelledOutAndOneOfTwo) {
  for (const char* const url : {"http://h", "HTTPS://h/p", "https://127.0.0.1:18443/put/7?a=b#c",
                                "http://[::1]:80/", "https://user:word@h/"}) {
    EXPECT_TRUE(IsHttpUrl(url)) << url;
  }
  for (const char* const url :
       {"", "h", "/put/7", "//h/put", "127.0.0.1:18443/put/7", "localhost:18443/put", "ftp://h/",
        "file:///tmp/x", "httpx://h/", "http:", "https://", "http//h", "http://h h/",
        "http://h/\r\nX-A: b", " http://h/", "data:,x", "C:\\x", "\\\\h\\x"}) {
    EXPECT_FALSE(IsHttpUrl(url)) << url;
  }
}

// Schemes are refused by the transfer itself too, whoever hands the URL over.
TEST(Http, OtherSchemesAreNotSpoken) {
  for (const char* const url : {"file:///etc/passwd", "file:///C:/windows/win.ini"}) {
    ByteChain answer;
    int32_t status = -1;
    EXPECT_EQ(GetToChain(url, answer, &status), 0) << url;
    EXPECT_EQ(answer.Total(), 0u) << url;
    EXPECT_EQ(status, -1) << url;
  }
}

TEST(Http, RefusedConnectionIsAFailureWithoutStatus) {
  constexpr char kNobodyListens[] = "http://127.0.0.1:1/";
  int32_t status = -1;
  EXPECT_FALSE(HttpGet(
      kNobodyListens, [](auto) { return true; }, &status));
  ByteChain body;
  EXPECT_FALSE(HttpPut(kNobodyListens, {"X-A: b"}, body, nullptr, &status));
  EXPECT_EQ(status, -1);
}

// A list that is searched for its end at every line would not be ready within the hour.
TEST(Http, ManyHeaderLinesCostLinearTime) {
  const std::vector<std::string> lines(1000000, "X-A: b");
  ByteChain body;
  EXPECT_FALSE(HttpPut("http://127.0.0.1:1/", lines, body, nullptr, nullptr));
}

}  // namespace
}  // namespace ostrell
