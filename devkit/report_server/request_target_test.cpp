#include "devkit/report_server/request_target.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ostrell {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(RequestTargetTest, QueryIsDecodedAsAPhpServerDoes) {
  EXPECT_THAT(
      DecodeQuery("p=C%3A%5cx+y%2B&u=a=b?c&regid=&&=x&h"),
      ElementsAre(Pair("p", "C:\\x y+"), Pair("u", "a=b?c"), Pair("regid", ""), Pair("h", "")));
  // A cut escape stands for itself.
  EXPECT_THAT(DecodeQuery("a=%4&b=%&c=%4g&d=%41"),
              ElementsAre(Pair("a", "%4"), Pair("b", "%"), Pair("c", "%4g"), Pair("d", "A")));
}

TEST(RequestTargetTest, FaultPrefixIsTakenOff) {
  const RequestTarget target = ParseRequestTarget("/fault/no-url/v8/rc2.php?u=1&u=2");
  EXPECT_EQ(target.FaultPrefix(), "/fault/no-url");
  EXPECT_EQ(target.pathAndQuery, "/v8/rc2.php?u=1&u=2");
  EXPECT_EQ(target.Value("u"), "1");
  EXPECT_EQ(ParseRequestTarget("/fault/cut?u=1").faultName, "cut");
  for (const char* other : {"/v8/rc6.php", "/v8/rc2.phpx", "/v8/rc2", "/x/v8/rc2.php", ""}) {
    EXPECT_EQ(ReportOfPath(other), "") << other;
  }
}

}  // namespace
}  // namespace ostrell
