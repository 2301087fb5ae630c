#include <windows.h>

#include "base/handle_win.h"
#include "base/read_file_win.h"
#include "env/client_identity.h"
#include "env/product_paths.h"
#include "env/report_clock.h"
#include "env/report_schedule.h"
#include "reports/scan_statistics.h"
#include "transport/report_url.h"
#include "transport/upload_report.h"

namespace ostrell {
namespace {

void DeleteOlderFiles() {
  for (const wchar_t* name :
       {L"tallyx.dat", L"tallyx1.dat", L"tallyx2.dat", L"tallyx3.dat", L"tallyx4.dat"}) {
    const auto path =
        WidePathText::Print(L"%sbin\\%s", GetProductPaths().install.wide.CStr(), name);
    DeleteFileW(path.CStr());
  }
}

void SendPayload(std::span<const std::byte> payload) {
  const auto url = ReportUrl<>::Print(kScanStatisticsUrl, ReportServerBaseUrl(),
                                      MachineIdentity().CStr(), ClientId().CStr());
  UploadReport(url.CStr(), payload.data(), static_cast<uint32_t>(payload.size()));
}

// False when the file cannot be opened.
bool SendFile(const wchar_t* path) {
  const FileHandle file(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) {
    return false;
  }
  LARGE_INTEGER size{};  // stays 0 where it cannot be told
  GetFileSizeEx(file.Get(), &size);
  const auto read = [&](std::span<std::byte> to) { return ReadExactly(file.Get(), to); };
  if (const auto payload = ReadScanStatistics(static_cast<uint64_t>(size.QuadPart), read)) {
    SendPayload(*payload);
  }
  return true;
}

}  // namespace

void ScanStatsJob(const Settings& settings, int64_t now) {
  const int64_t last = ReadLastReportTime(settings, kScanStatisticsTime.key);
  if (!IsDue(kScanStatisticsTime, {last, last}, now)) {
    return;
  }
  DeleteOlderFiles();
  const auto path =
      WidePathText::Print(L"%s%s", GetProductPaths().data.wide.CStr(), L"tallyx5.dat");
  if (SendFile(path.CStr())) {
    DeleteFileW(path.CStr());
    WriteLastReportTime(settings, kScanStatisticsTime.key, ReportClock());
  }
}

}  // namespace ostrell
