#include "devkit/report_server/certificate.h"

#include <gtest/gtest.h>
#include <openssl/x509v3.h>

namespace ostrell {
namespace {

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
