#include "env/report_settings.h"

#include "base/text.h"
#include "env/report_schedule.h"

namespace ostrell {
namespace {

constexpr wchar_t kKey[] = L"SOFTWARE\\Velmora\\Corvane\\Ostrell";
constexpr uint32_t kReportLinkLimit = 1040;

}  // namespace

std::string ReadReportLink(const Registry& registry) {
  const auto link =
      registry.ReadText(RegistryRoot::kMachine, kKey, L"ReportLink", kReportLinkLimit);
  return link ? Utf8FromWide(*link) : std::string();
}

uint32_t ReadMinReportInterval(const Registry& registry) {
  const uint32_t interval =
      registry.ReadDword(RegistryRoot::kMachine, kKey, L"MinReportInterval").value_or(0);
  return interval != 0 ? interval : static_cast<uint32_t>(kDefaultReportInterval);
}

}  // namespace ostrell
