#include "reports/samples.h"

#include <array>

#include "base/byte_buffer.h"
#include "base/bytes.h"
#include "base/text.h"
#include "reports/quarantine.h"
#include "reports/record_query.h"
#include "reports/sample_pass.h"
#include "reports/sample_upload.h"
#include "reports/windowed_report.h"

namespace ostrell {
namespace {

// A shell link begins with the size of its header ([MS-SHLLINK], 2.1).
bool IsShellLink(std::span<const std::byte> file) {
  constexpr uint32_t kHeaderSize = 76;
  return ReadLittleEndian<uint32_t>(file, 0) == kHeaderSize;
}

enum class Reading { kDone, kWrongSize, kFailed };

Reading ReadSampleFile(const Files& files, std::string_view path, ByteBuffer& content) {
  const auto widePath = WideFromUtf8(path);
  if (!widePath || widePath->size() >= kPathSize) {
    return Reading::kFailed;
  }
  const auto file = files.Open(*widePath, FileUse::kForeign);
  const auto size = file ? file->Size() : std::nullopt;
  if (!size) {
    return Reading::kFailed;
  }
  if (!IsSampleSize(*size)) {
    return Reading::kWrongSize;
  }
  auto bytes = AllocateBytes(static_cast<size_t>(*size));
  if (!bytes || !ReadExactly(*file, 0, *bytes)) {
    return Reading::kFailed;
  }
  content = *std::move(bytes);
  return Reading::kDone;
}

void RunPass(const Run& run, const JsonOwner& records, PathOfRecord* pathOf, PathKeys& handled) {
  const auto submit = [&run](std::string_view path) { SubmitSampleFile(run, path); };
  RunSamplePass(records, pathOf, handled, submit, run.clock);
}

}  // namespace

void SampleReports(const Run& run, const json_t* instructions) {
  RunWindowedReport(run, kSampleTime, [&](int64_t from) { return SampleJob(run, from); });
  RunWindowedReport(run, kFalsePositiveTime,
                    [&](int64_t from) { return FalsePositiveJob(run, from); });
  RunWindowedReport(run, kQuarantineTime,
                    [&](int64_t from) { return QuarantineJob(run, from, instructions); });
}

int32_t SampleJob(const Run& run, int64_t from) {
  constexpr std::array<int32_t, 2> kNetworkKinds = {31, 47};
  PathKeys handled(kMaxPathKeys);
  const JsonOwner submitted =
      RunRecordQuery(run, [&] { return RecordsInRangeWithNegativeId(from, run.now); });
  if (!submitted) {
    return 0;
  }
  RunPass(run, submitted, SubmittedSamplePath, handled);
  RunPass(run,
          RunRecordQuery(run, [&] { return RecordsInRangeWithIds(from, run.now, kNetworkKinds); }),
          NetworkProgramPath, handled);
  return 1;
}

int32_t FalsePositiveJob(const Run& run, int64_t from) {
  constexpr std::array<int32_t, 3> kDetectionKinds = {1, 3, 4};
  PathKeys handled(kMaxPathKeys);
  const JsonOwner records =
      RunRecordQuery(run, [&] { return RecordsInRangeWithIds(from, run.now, kDetectionKinds); });
  if (!records) {
    return 0;
  }
  RunPass(run, records, FalsePositivePath, handled);
  return 1;
}

int32_t SubmitSampleFile(const Run& run, std::string_view path) {
  ByteBuffer content;
  const Reading reading = ReadSampleFile(run.files, path, content);
  if (reading != Reading::kDone) {
    return reading == Reading::kWrongSize ? 1 : 0;
  }
  if (IsShellLink(content)) {
    return 1;
  }
  const std::string digest = SampleDigest(content);
  switch (AskSampleKnown(run, digest, path, SampleSource::kDisk)) {
    case SampleAnswer::kKnown:
      return 1;
    case SampleAnswer::kUnknown:
      return SendSample(run, digest, content) ? 1 : 0;
    case SampleAnswer::kNoAnswer:
      break;
  }
  return 0;
}

}  // namespace ostrell
