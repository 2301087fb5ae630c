#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/bounded_text.h"

namespace ostrell {

// The URLs of the reports, one function an endpoint. Texts are inserted as they stand, without URL
// escaping.

// Capacities in bytes, terminator included. A longer URL is cut.
inline constexpr size_t kReportUrlSize = 1024;
inline constexpr size_t kLogReportUrlSize = 1023;  // rc2 and rc5
inline constexpr size_t kSampleQuestionUrlSize = 4096;

template <size_t Size = kReportUrlSize>
using ReportUrl = BoundedText<char, Size>;

// Where a report goes and from whom it comes. UTF-8.
struct ReportOrigin {
  std::string_view baseUrl;          // scheme and host, without a path
  std::string_view machineIdentity;  // "u"
  std::string_view clientId;         // "regid"
};

// What rc1 says of machine and installation, by query key.
struct MachineInformation {
  uint32_t customerId;              // "c"
  std::string_view productVersion;  // "v"
  uint64_t signatureVersion;        // "d"
  uint32_t systemFamily;            // "s"
  uint32_t processorClass;          // "x"
  uint64_t secondsSinceLastReport;  // "r"
  uint32_t kernelMajor;             // "ma"
  uint32_t kernelMinor;             // "mi"
  uint32_t kernelBuild;             // "bu"
  uint32_t kernelRevision;          // "re"
};
ReportUrl<> MachineInformationUrl(const ReportOrigin& origin, const MachineInformation& facts);

ReportUrl<kLogReportUrlSize> DetectionLogUrl(const ReportOrigin& origin);
ReportUrl<kLogReportUrlSize> PopupBlockLogUrl(const ReportOrigin& origin);
ReportUrl<> ScanStatisticsUrl(const ReportOrigin& origin);

// `path` is escaped already; `source` is a number of sample_upload.h.
ReportUrl<kSampleQuestionUrlSize> SampleQuestionUrl(const ReportOrigin& origin,
                                                    std::string_view sha1Text, int32_t source,
                                                    std::string_view path);
ReportUrl<> SampleUploadUrl(const ReportOrigin& origin, std::string_view sha1Text);

// Here the base URL is the client id provider's, which brings its own "/v8".
ReportUrl<> UnifiedReportUrl(const ReportOrigin& origin, int32_t customerId, uint32_t systemFamily,
                             uint32_t processorClass);

// Scheme and host of the report server, without a path; set when the project is configured.
const char* ReportServerBaseUrl();

}  // namespace ostrell
