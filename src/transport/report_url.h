#pragma once

#include <string_view>

#include "base/bounded_text.h"

namespace ostrell {

// A report URL is the report server base URL followed by one of these templates. The values are
// inserted as they stand, without URL escaping. {fmt} takes "%llu" for any unsigned 64-bit value.
inline constexpr std::string_view kMachineInformationUrl =
    "%s/v8/rc1.php?u=%s&c=%d&v=%s&d=%llu&s=%u&x=%u&r=%llu&ma=%u&mi=%u&bu=%u&re=%u&regid=%s";
inline constexpr std::string_view kDetectionLogUrl = "%s/v8/rc2.php?u=%s&regid=%s";
inline constexpr std::string_view kSampleQuestionUrl = "%s/v8/rc3.php?u=%s&h=%s&t=%d&p=%s&regid=%s";
inline constexpr std::string_view kSampleUploadUrl = "%s/v8/rc3.php?u=%s&h=%s&regid=%s";
inline constexpr std::string_view kScanStatisticsUrl = "%s/v8/rc4.php?v=5&u=%s&regid=%s";
inline constexpr std::string_view kPopupBlockLogUrl = "%s/v8/rc5.php?u=%s&regid=%s";
// Behind the client id provider's base URL, which brings its own "/v8".
inline constexpr std::string_view kUnifiedReportUrl = "%s/rc7.php?u=%s&c=%d&s=%u&x=%u&regid=%s";

// Capacities in bytes, terminator included. A longer URL is cut.
inline constexpr size_t kReportUrlSize = 1024;
inline constexpr size_t kLogReportUrlSize = 1023;  // rc2 and rc5
inline constexpr size_t kSampleQuestionUrlSize = 4096;

template <size_t Size = kReportUrlSize>
using ReportUrl = BoundedText<char, Size>;

// Scheme and host of the report server, without a path; set when the project is configured.
const char* ReportServerBaseUrl();

}  // namespace ostrell
