#include "reports/sample_upload.h"

#include "base/hex.h"
#include "base/sha1.h"
#include "reports/windowed_report.h"
#include "transport/http.h"
#include "transport/upload_report.h"

namespace ostrell {
namespace {

constexpr int32_t kStatusKnown = 200;
constexpr int32_t kStatusUnknown = 404;

}  // namespace

std::string SampleDigest(std::span<const std::byte> file) {
  return UpperHex(Sha1::Of(file));
}

SampleAnswer AskSampleKnown(const Run& run, std::string_view sha1Text, std::string_view path,
                            SampleSource source) {
  const auto escaped = EscapeForUrl(path);
  if (!escaped) {
    return SampleAnswer::kNoAnswer;
  }
  const auto url =
      SampleQuestionUrl(OriginOf(run), sha1Text, static_cast<int32_t>(source), *escaped);
  int32_t status = 0;
  if (!HttpGet(url.CStr(), DiscardBody, &status)) {
    return SampleAnswer::kNoAnswer;
  }
  switch (status) {
    case kStatusKnown:
      return SampleAnswer::kKnown;
    case kStatusUnknown:
      return SampleAnswer::kUnknown;
    default:
      return SampleAnswer::kNoAnswer;
  }
}

bool SendSample(const Run& run, std::string_view sha1Text, std::span<const std::byte> file) {
  const auto url = SampleUploadUrl(OriginOf(run), sha1Text);
  return UploadReport(url.CStr(), file.data(), static_cast<uint32_t>(file.size())) == 1;
}

}  // namespace ostrell
