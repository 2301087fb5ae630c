#include "transport/report_url.h"

#include <gtest/gtest.h>

#include <string>

namespace ostrell {
namespace {

constexpr ReportOrigin kOrigin{"https://h:1", "M", "I"};

TEST(ReportUrl, EachReportHasItsKeysInTheirOrder) {
  EXPECT_EQ(MachineInformationUrl(kOrigin, {.customerId = 4294967295,
                                            .productVersion = "6.0",
                                            .signatureVersion = 18446744073709551615U,
                                            .systemFamily = 4294967294,
                                            .processorClass = 4294967293,
                                            .secondsSinceLastReport = 18446744073709551614U,
                                            .kernelMajor = 4294967292,
                                            .kernelMinor = 4294967291,
                                            .kernelBuild = 4294967290,
                                            .kernelRevision = 4294967289})
                .View(),
            "https://h:1/v8/rc1.php?u=M&c=-1&v=6.0&d=18446744073709551615&s=4294967294&x=4294967293"
            "&r=18446744073709551614&ma=4294967292&mi=4294967291&bu=4294967290&re=4294967289"
            "&regid=I");
  EXPECT_EQ(DetectionLogUrl(kOrigin).View(), "https://h:1/v8/rc2.php?u=M&regid=I");
  EXPECT_EQ(SampleQuestionUrl(kOrigin, "A1", -2, "C%3A").View(),
            "https://h:1/v8/rc3.php?u=M&h=A1&t=-2&p=C%3A&regid=I");
  EXPECT_EQ(SampleUploadUrl(kOrigin, "A1").View(), "https://h:1/v8/rc3.php?u=M&h=A1&regid=I");
  EXPECT_EQ(ScanStatisticsUrl(kOrigin).View(), "https://h:1/v8/rc4.php?v=5&u=M&regid=I");
  EXPECT_EQ(PopupBlockLogUrl(kOrigin).View(), "https://h:1/v8/rc5.php?u=M&regid=I");
  EXPECT_EQ(UnifiedReportUrl(kOrigin, -1, 4294967295, 4294967294).View(),
            "https://h:1/rc7.php?u=M&c=-1&s=4294967295&x=4294967294&regid=I");
}

TEST(ReportUrl, LongOneIsCut) {
  const std::string base(1100, 'b');
  const ReportOrigin origin{base, "M", "I"};
  EXPECT_EQ(MachineInformationUrl(origin, {}).View(), base.substr(0, 1023));
  EXPECT_EQ(DetectionLogUrl(origin).View(), base.substr(0, 1022));
  EXPECT_EQ(SampleUploadUrl(origin, "A1").View(), base.substr(0, 1023));
  EXPECT_EQ(ScanStatisticsUrl(origin).View(), base.substr(0, 1023));
  EXPECT_EQ(PopupBlockLogUrl(origin).View(), base.substr(0, 1022));
  EXPECT_EQ(UnifiedReportUrl(origin, 1, 1, 1).View(), base.substr(0, 1023));
}

// 450 letters of three bytes, nine characters each when they are escaped.
TEST(ReportUrl, QuestionOfALongPathIsWholeUpTo4095Bytes) {
  std::string path;
  for (int i = 0; i < 450; ++i) {
    path += "%E6%BC%A2";
  }
  const std::string url = "https://h:1/v8/rc3.php?u=M&h=A1&t=2&p=" + path;  // 4088 bytes
  EXPECT_EQ(SampleQuestionUrl(kOrigin, "A1", 2, path).View(), url + "&regid=");
  EXPECT_EQ(SampleQuestionUrl(kOrigin, "A1", 2, path.substr(1)).View(),
            url.substr(0, 38) + path.substr(1) + "&regid=I");
}

}  // namespace
}  // namespace ostrell
