#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/x509v3.h>

#include "devkit/report_server/certificate.h"
#include "devkit/report_server/packed_record_writer.h"
#include "devkit/report_server/request_target.h"

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

TEST(PackedRecordWriterTest, LengthsHaveTheirBounds) {
  EXPECT_EQ(RecordSizeWord(0x03FFFFFF), 0x03FFFFFFU);
  EXPECT_EQ(RecordSizeWord(0x04000000), 0xC4000000U);
  // The extension is cut where its length byte ends.
  const std::string block = PackRecord("{}", std::string(256, 'x'));
  EXPECT_EQ(block[kRecordExtensionOffset], '\xFF');
  EXPECT_EQ(block.substr(14 + 254), "x{}");
}

TEST(CertificateTest, IsForLoopbackOnlyAndSignedByItsKey) {
  const Certificate made = MakeLoopbackCertificate();
  EXPECT_EQ(X509_check_ip_asc(made.certificate.Get(), "127.0.0.1", 0), 1);
  EXPECT_EQ(X509_check_ip_asc(made.certificate.Get(), "127.0.0.2", 0), 0);
  EXPECT_EQ(X509_verify(made.certificate.Get(), made.key.Get()), 1);
  EXPECT_LT(X509_cmp_current_time(X509_get0_notBefore(made.certificate.Get())), 0);
  EXPECT_GT(X509_cmp_current_time(X509_get0_notAfter(made.certificate.Get())), 0);
}

}  // namespace
}  // namespace ostrell
