#include "devkit/fleet/fleet.h"

#include <functional>
#include <map>
#include <queue>
#include <random>
#include <string>
#include <tuple>

#include "base/text.h"
#include "env/report_schedule.h"

namespace ostrell {
namespace {

constexpr int64_t kBegin = 1795564800;  // 2026-11-25 00:00:00 UTC
constexpr int64_t kDay = 86400;

struct SimulatedReport {
  const ReportTime& time;
  size_t column;   // of QuarterTraffic
  int64_t sent;    // requests of a report that arrives,
  int64_t unsent;  // and of one that does not
  bool isLost;     // recorded all the same

  bool MayWait() const { return sent == 2 && !isLost; }
};
const std::array<SimulatedReport, 8> kReports = {{
    {kMachineInformationTime, 0, 1, 1, false},
    {kDetectionLogTime, 1, 2, 1, false},
    {kPopupBlockLogTime, 2, 2, 1, false},
    {kSampleTime, 3, 1, 1, true},
    {kFalsePositiveTime, 3, 1, 1, true},
    {kQuarantineTime, 3, 1, 0, false},  // it waits for the answer to rc1
    {kScanStatisticsTime, 4, 2, 1, true},
    {kUnifiedReportTime, 5, 2, 1, false},
}};

// Last times by key.
using LastTimes = std::map<std::string, int64_t>;

// The settings of the machine whose turn it is.
class FleetSettings : public SettingsStore {
 public:
  LastTimes* current = nullptr;

  void Release() override {}
  int32_t ReadInt32(const char*, int32_t*) override { return 0; }
  int32_t ReadInt64(const char* key, int64_t* value) override {
    *value = (*current)[key];
    return 1;
  }
  void Reserved3() override {}
  void Reserved4() override {}
  int32_t WriteInt64(const char* key, int64_t value) override {
    (*current)[key] = value;
    return 1;
  }
};

bool IsWithin(const Span& span, int64_t time) {
  return time >= span.from && time < span.to;
}

// A number in [0, end).
int64_t Below(int64_t end, std::mt19937_64& numbers) {
  return end > 0 ? static_cast<int64_t>(numbers() % end) : 0;
}

void RunAgent(const FleetOptions& options, const Settings& settings, int64_t time,
              std::mt19937_64& numbers, QuarterTraffic& quarter) {
  const int64_t now = kBegin + time;
  for (const SimulatedReport& report : kReports) {
    if (!IsDue(report.time, ReadReportWindow(settings, report.time.key, now), now)) {
      continue;
    }
    const bool isRefused =
        IsWithin(options.outage, time) ||
        (report.MayWait() && IsWithin(options.refusing, time) && Below(4, numbers) > 0);
    const int64_t requests = isRefused ? report.unsent : report.sent;
    quarter[report.column] += requests;
    quarter.back() += requests;
    if (!isRefused || report.isLost) {
      WriteLastReportTime(settings, report.time.key, now);
    }
  }
}

}  // namespace

std::vector<QuarterTraffic> SimulateFleet(const FleetOptions& options) {
  std::mt19937_64 numbers(options.seed);
  std::vector<LastTimes> machines(options.machines);
  using Start = std::tuple<int64_t, uint32_t, bool>;  // time, machine, others follow
  std::priority_queue<Start, std::vector<Start>, std::greater<>> starts;
  for (uint32_t machine = 0; machine < options.machines; ++machine) {
    for (const SimulatedReport& report : kReports) {
      const int64_t ago = options.hasSentBefore ? Below(report.time.interval, numbers) : kBegin;
      machines[machine][Utf8FromWide(report.time.key)] = kBegin - ago;
    }
    starts.emplace(Below(options.startEvery, numbers), machine, true);
    if (const auto [from, to] = options.everyoneStarts; to > from) {
      starts.emplace(from + Below(to - from, numbers), machine, false);
    }
  }
  FleetSettings store;
  const Settings settings{SettingsStoreOwner(&store)};
  std::vector<QuarterTraffic> traffic(options.days * kDay / kQuarter);
  while (std::get<0>(starts.top()) < options.days * kDay) {
    const auto [time, machine, isRegular] = starts.top();
    starts.pop();
    if (isRegular) {
      const int64_t longer = Below(2 * options.spread, numbers) - options.spread;
      starts.emplace(time + options.startEvery + longer, machine, true);
    }
    store.current = &machines[machine];
    RunAgent(options, settings, time, numbers, traffic[time / kQuarter]);
  }
  return traffic;
}

}  // namespace ostrell
