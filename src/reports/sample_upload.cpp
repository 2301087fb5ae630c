#include "reports/sample_upload.h"

#include "base/hex.h"
#include "base/sha1.h"
#include "env/client_identity.h"
#include "transport/http.h"
#include "transport/report_url.h"
#include "transport/upload_report.h"

namespace ostrell {
namespace {

constexpr int32_t kStatusKnown = 200;
constexpr int32_t kStatusUnknown = 404;

}  // namespace

std::string SampleDigest(std::span<const std::byte> file) {
  return UpperHex(Sha1::Of(file));
}

int32_t AskSampleKnown(const char* sha1Text, int32_t& known, std::string_view path,
                       SampleSource source) {
  const auto escaped = EscapeForUrl(path);
  if (!escaped) {
    return 0;
  }
  const auto url = ReportUrl<kSampleQuestionUrlSize>::Print(
      kSampleQuestionUrl, ReportServerBaseUrl(), MachineIdentity().CStr(), sha1Text,
      static_cast<int32_t>(source), *escaped, ClientId().CStr());
  int32_t status = 0;
  if (!HttpGet(url.CStr(), DiscardBody, &status) ||
      (status != kStatusKnown && status != kStatusUnknown)) {
    return 0;
  }
  known = status == kStatusKnown ? 1 : 0;
  return 1;
}

int32_t SendSample(const char* sha1Text, std::span<const std::byte> file) {
  const auto url = ReportUrl<>::Print(kSampleUploadUrl, ReportServerBaseUrl(),
                                      MachineIdentity().CStr(), sha1Text, ClientId().CStr());
  return UploadReport(url.CStr(), file.data(), static_cast<uint32_t>(file.size()));
}

}  // namespace ostrell
