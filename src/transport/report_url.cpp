#include "transport/report_url.h"

namespace ostrell {

ReportUrl<> MachineInformationUrl(const ReportOrigin& origin, const MachineInformation& facts) {
  return ReportUrl<>::Print(
      "%s/v8/rc1.php?u=%s&c=%d&v=%s&d=%llu&s=%u&x=%u&r=%llu&ma=%u&mi=%u&bu=%u&re=%u&regid=%s",
      origin.baseUrl, origin.machineIdentity, static_cast<int32_t>(facts.customerId),
      facts.productVersion, facts.signatureVersion, facts.systemFamily, facts.processorClass,
      facts.secondsSinceLastReport, facts.kernelMajor, facts.kernelMinor, facts.kernelBuild,
      facts.kernelRevision, origin.clientId);
}

ReportUrl<kLogReportUrlSize> DetectionLogUrl(const ReportOrigin& origin) {
  return ReportUrl<kLogReportUrlSize>::Print("%s/v8/rc2.php?u=%s&regid=%s", origin.baseUrl,
                                             origin.machineIdentity, origin.clientId);
}

ReportUrl<kLogReportUrlSize> PopupBlockLogUrl(const ReportOrigin& origin) {
  return ReportUrl<kLogReportUrlSize>::Print("%s/v8/rc5.php?u=%s&regid=%s", origin.baseUrl,
                                             origin.machineIdentity, origin.clientId);
}

ReportUrl<> ScanStatisticsUrl(const ReportOrigin& origin) {
  return ReportUrl<>::Print("%s/v8/rc4.php?v=5&u=%s&regid=%s", origin.baseUrl,
                            origin.machineIdentity, origin.clientId);
}

ReportUrl<kSampleQuestionUrlSize> SampleQuestionUrl(const ReportOrigin& origin,
                                                    std::string_view sha1Text, int32_t source,
                                                    std::string_view path) {
  return ReportUrl<kSampleQuestionUrlSize>::Print("%s/v8/rc3.php?u=%s&h=%s&t=%d&p=%s&regid=%s",
                                                  origin.baseUrl, origin.machineIdentity, sha1Text,
                                                  source, path, origin.clientId);
}

ReportUrl<> SampleUploadUrl(const ReportOrigin& origin, std::string_view sha1Text) {
  return ReportUrl<>::Print("%s/v8/rc3.php?u=%s&h=%s&regid=%s", origin.baseUrl,
                            origin.machineIdentity, sha1Text, origin.clientId);
}

ReportUrl<> UnifiedReportUrl(const ReportOrigin& origin, int32_t customerId, uint32_t systemFamily,
                             uint32_t processorClass) {
  return ReportUrl<>::Print("%s/rc7.php?u=%s&c=%d&s=%u&x=%u&regid=%s", origin.baseUrl,
                            origin.machineIdentity, customerId, systemFamily, processorClass,
                            origin.clientId);
}

const char* ReportServerBaseUrl() {
  return OSTRELL_REPORT_SERVER;
}

}  // namespace ostrell
