#include <windows.h>

#include "base/registry_win.h"
#include "base/text.h"
#include "env/report_schedule.h"
#include "env/report_settings.h"

namespace ostrell {
namespace {

constexpr const wchar_t* kSubkey = L"SOFTWARE\\Velmora\\Corvane\\Ostrell";
constexpr DWORD kReportLinkLimit = 1040;

}  // namespace

std::string ReadReportLink() {
  const auto link = ReadRegistryText(HKEY_LOCAL_MACHINE, kSubkey, L"ReportLink", kReportLinkLimit);
  return link ? Utf8FromWide(*link) : std::string();
}

uint32_t ReadMinReportInterval() {
  const uint32_t interval =
      ReadRegistryDword(HKEY_LOCAL_MACHINE, kSubkey, L"MinReportInterval").value_or(0);
  return interval != 0 ? interval : static_cast<uint32_t>(kDefaultReportInterval);
}

}  // namespace ostrell
