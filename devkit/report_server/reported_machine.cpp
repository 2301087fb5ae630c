#include "devkit/report_server/reported_machine.h"

#include <fmt/core.h>

#include <algorithm>

#include "base/text.h"
#include "devkit/report_server/drive_file.h"

namespace ostrell {
namespace {

JsonOwner Load(const std::filesystem::path& file) {
  return JsonOwner(json_load_file(file.c_str(), 0, nullptr));
}

std::filesystem::path DataFile(const std::filesystem::path& drive, std::string_view name) {
  return drive / "ProgramData/Velmora/Corvane" / name;
}

}  // namespace

ReportedMachine::ReportedMachine(const MachinePlaces& places)
    : drive(places.drive),
      now(places.now),
      settings(Load(places.settings)),
      instructions(Load(places.instructions)),
      records(Load(DataFile(drive, "records.json"))),
      quarantine(Load(DataFile(drive, "quarantine/list.json"))) {}

std::optional<int64_t> ReportedMachine::StartOf(const ReportTime& report) const {
  const json_t* const times = json_object_get(settings.Get(), "int64");
  const int64_t last = Integer64Member(times, Utf8FromWide(report.key).c_str()).value_or(0);
  const ReportWindow window{last, std::max(now - kLookBack, last)};
  return IsDue(report, window, now) ? std::optional(window.start) : std::nullopt;
}

std::vector<const json_t*> ReportedMachine::RecordsSince(
    int64_t from, const std::function<bool(int64_t fid)>& isMeant) const {
  std::vector<const json_t*> found;
  size_t index = 0;
  const json_t* record = nullptr;
  json_array_foreach(records.Get(), index, record) {
    const auto time = Integer64Member(record, "ts");
    const auto fid = Integer64Member(record, "fid");
    if (time && fid && *time >= from && *time <= now && isMeant(*fid)) {
      found.push_back(record);
    }
  }
  std::stable_sort(found.begin(), found.end(), [](const json_t* left, const json_t* right) {
    return *Integer64Member(left, "ts") > *Integer64Member(right, "ts");
  });
  return found;
}

std::string ReportedMachine::WhyNoSample(std::string_view windowsPath) const {
  return ostrell::WhyNoSample(FindInDrive(drive, windowsPath));
}

std::string ReportedMachine::WhyNoHeldSample(int64_t id) const {
  // Of a held file the beginning does not matter.
  return WhyWrongSize(DataFile(drive, fmt::format("quarantine/{}.bin", id)));
}

}  // namespace ostrell
