#include "reports/scan_statistics.h"

#include <zlib.h>

#include <array>
#include <utility>

#include "base/bytes.h"
#include "env/report_schedule.h"
#include "reports/windowed_report.h"
#include "transport/upload_report.h"

namespace ostrell {
namespace {

void DeleteOlderFiles(const Run& run) {
  for (const wchar_t* name :
       {L"tallyx.dat", L"tallyx1.dat", L"tallyx2.dat", L"tallyx3.dat", L"tallyx4.dat"}) {
    const auto path = WidePathText::Print(L"%sbin\\%s", run.paths.install.wide.View(), name);
    run.files.Delete(path.CStr());
  }
}

// False when the file cannot be opened.
bool SendFile(const Run& run, const wchar_t* path) {
  const auto file = run.files.Open(path, FileUse::kShared);
  if (!file) {
    return false;
  }
  if (const auto payload = ReadScanStatistics(*file)) {
    UploadReport(ScanStatisticsUrl(OriginOf(run)).CStr(), payload->data(),
                 static_cast<uint32_t>(payload->size()));
  }
  return true;
}

}  // namespace

void ScanStatsJob(const Run& run) {
  const int64_t last = ReadLastReportTime(run.settings, kScanStatisticsTime.key);
  if (!IsDue(kScanStatisticsTime, {last, last}, run.now)) {
    return;
  }
  DeleteOlderFiles(run);
  const auto path = WidePathText::Print(L"%s%s", run.paths.data.wide.View(), L"tallyx5.dat");
  if (SendFile(run, path.CStr())) {
    run.files.Delete(path.CStr());
    WriteLastReportTime(run.settings, kScanStatisticsTime.key, run.clock.Now());
  }
}

std::optional<ByteBuffer> ReadScanStatistics(const OpenFile& file) {
  const uint64_t fileSize = file.Size().value_or(0);
  std::array<std::byte, 16> header;
  if (fileSize < header.size() || !ReadExactly(file, 0, header)) {
    return std::nullopt;
  }
  const auto crc = ReadLittleEndian<uint32_t>(header, 0);
  const auto length = ReadLittleEndian<uint64_t>(header, 8);
  if (*length > fileSize - header.size() || *length > kMaxStatisticsBytes) {
    return std::nullopt;
  }
  auto payload = AllocateBytes(static_cast<size_t>(*length));
  if (!payload || !ReadExactly(file, header.size(), *payload)) {
    return std::nullopt;
  }
  const bool isSound =
      crc32_z(0, reinterpret_cast<const Bytef*>(payload->data()), payload->size()) == *crc;
  return isSound ? std::move(payload) : std::nullopt;
}

}  // namespace ostrell
