#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <numeric>
#include <string>

#include "base/print.h"
#include "devkit/fleet/fleet.h"

// Usage: fleet_simulation [SEED]
//
// What 1,000,000 machines ask of the report server, in requests a second for each quarter of an
// hour: on ordinary days, when all of them start the agent within ten minutes, and in and after an
// outage.

namespace ostrell {
namespace {

constexpr int64_t kDay = 96;  // quarters
// The first day lets the fleet find its pace; what happens begins at noon of the second.
constexpr int64_t kNoon = kDay + kDay / 2;
constexpr int64_t kNoonSecond = kNoon * kQuarter;
constexpr int64_t kHour = 3600;

int64_t Scaled(int64_t requests, const FleetOptions& options) {
  return requests * 1000000 / options.machines / kQuarter;
}

std::string RowsOf(const std::vector<QuarterTraffic>& traffic, int64_t count,
                   const FleetOptions& options) {
  std::string rows = "         rc1    rc2    rc5    rc3    rc4    rc7    all\n";
  for (int64_t i = kNoon - 2; i < kNoon + count; ++i) {
    rows += Print("%2d:%s", (i - kDay) / 4, std::array{"00", "15", "30", "45"}[i % 4]);
    for (const int64_t requests : traffic[i]) {
      rows += Print("%7lld", Scaled(requests, options));
    }
    rows += '\n';
  }
  return rows;
}

// The fleet has settled behind the last hour that is a tenth above or below the mean.
std::string SummaryOf(const std::vector<QuarterTraffic>& traffic, const FleetOptions& options) {
  const auto sum = [&](int64_t from, int64_t to) {
    return std::accumulate(traffic.begin() + from, traffic.begin() + to, int64_t{0},
                           [](int64_t all, const auto& quarter) { return all + quarter.back(); });
  };
  const int64_t mean = sum(kDay, kNoon) / (kNoon - kDay);
  const auto end = static_cast<int64_t>(traffic.size());
  int64_t peak = kNoon;
  int64_t settled = kNoon;
  for (int64_t i = kNoon; i + 4 <= end; ++i) {
    peak = sum(i, i + 1) > sum(peak, peak + 1) ? i : peak;
    settled = std::abs(sum(i, i + 4) - 4 * mean) > 4 * mean / 10 ? i + 4 : settled;
  }
  return Print(
      "mean %lld/s, peak %lld/s, %lld %% of it, at noon + %lld min; settled at noon + %s\n",
      Scaled(mean, options), Scaled(sum(peak, peak + 1), options), sum(peak, peak + 1) * 100 / mean,
      (peak - kNoon) * 15,
      settled == end ? "more than this" : Print("%lld min", (settled - kNoon) * 15));
}

void Run(uint64_t seed) {
  const Span once{kNoonSecond, kNoonSecond + 600};
  const Span outage{kNoonSecond, kNoonSecond + 6 * kHour};
  const Span after{outage.to, outage.to + 4 * kHour};
  const struct {
    const char* title;
    FleetOptions options;
    int64_t shown;  // quarters
  } kScenarios[] = {{"ordinary days", {.days = 3, .seed = seed}, 8},
                    {"all start once more from 12:00 to 12:10",
                     {.days = 4, .everyoneStarts = once, .seed = seed},
                     24},
                    {"outage from 12:00 to 18:00", {.outage = outage, .seed = seed}, 48},
                    {"the same, and until 22:00 three of four tickets of rc2, rc5, rc7 refused",
                     {.outage = outage, .refusing = after, .seed = seed},
                     48}};
  for (const auto& [title, options, shown] : kScenarios) {
    const auto traffic = SimulateFleet(options);
    const std::string text =
        Print("%s; %u machines, seed %llu\n%s%s\n", title, options.machines, options.seed,
              RowsOf(traffic, shown, options), SummaryOf(traffic, options));
    std::fputs(text.c_str(), stdout);
  }
}

}  // namespace
}  // namespace ostrell

int main(int argc, char** argv) {
  try {
    ostrell::Run(argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "fleet_simulation: %s\n", error.what());
    return 1;
  }
}
