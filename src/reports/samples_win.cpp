#include <array>

#include "base/bytes.h"
#include "env/report_clock.h"
#include "reports/quarantine.h"
#include "reports/record_query.h"
#include "reports/sample_file_win.h"
#include "reports/sample_pass.h"
#include "reports/sample_upload.h"
#include "reports/samples.h"
#include "reports/windowed_report.h"

namespace ostrell {
namespace {

// A shell link begins with the size of its header ([MS-SHLLINK], 2.1).
bool IsShellLink(std::span<const std::byte> file) {
  constexpr uint32_t kHeaderSize = 76;
  return ReadLittleEndian<uint32_t>(file, 0) == kHeaderSize;
}

void RunPass(const JsonOwner& records, PathOfRecord* pathOf, PathKeys& handled) {
  RunSamplePass(records, pathOf, handled, SubmitSampleFile, ReportClock);
}

}  // namespace

void SampleReports(const Settings& settings, int64_t now, const json_t* instructions) {
  RunWindowedReport(settings, now, kSampleTime,
                    [now](int64_t from) { return SampleJob(from, now); });
  RunWindowedReport(settings, now, kFalsePositiveTime,
                    [now](int64_t from) { return FalsePositiveJob(from, now); });
  RunWindowedReport(settings, now, kQuarantineTime,
                    [instructions](int64_t from) { return QuarantineJob(from, instructions); });
}

int32_t SampleJob(int64_t from, int64_t now) {
  constexpr std::array<int32_t, 2> kNetworkKinds = {31, 47};
  PathKeys handled(kMostPathKeys);
  const JsonOwner submitted = RunRecordQuery(RecordsInRangeWithNegativeId(from, now).Get());
  if (!submitted) {
    return 0;
  }
  RunPass(submitted, SubmittedSamplePath, handled);
  RunPass(RunRecordQuery(RecordsInRangeWithIds(from, now, kNetworkKinds).Get()), NetworkProgramPath,
          handled);
  return 1;
}

int32_t FalsePositiveJob(int64_t from, int64_t now) {
  constexpr std::array<int32_t, 3> kDetectionKinds = {1, 3, 4};
  PathKeys handled(kMostPathKeys);
  const JsonOwner records = RunRecordQuery(RecordsInRangeWithIds(from, now, kDetectionKinds).Get());
  if (!records) {
    return 0;
  }
  RunPass(records, FalsePositivePath, handled);
  return 1;
}

int32_t SubmitSampleFile(const char* path) {
  const SampleFile file(path);
  switch (file.GetState()) {
    case SampleFile::State::kUnreadable:
      return 0;
    case SampleFile::State::kWrongSize:
      return 1;
    case SampleFile::State::kReadable:
      break;
  }
  if (IsShellLink(file.Bytes())) {
    return 1;
  }
  const std::string digest = SampleDigest(file.Bytes());
  int32_t known = 0;
  if (AskSampleKnown(digest.c_str(), known, path, SampleSource::kDisk) == 0) {
    return 0;
  }
  return known == 1 ? 1 : SendSample(digest.c_str(), file.Bytes());
}

}  // namespace ostrell
