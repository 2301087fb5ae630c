#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace ostrell {

// Many machines that run the agent, by the rules of env/report_schedule.h. A machine always has
// something to send: an upload is two requests, a sample pass asks about one file that is known.
// All times are seconds since the simulation began.
struct Span {
  int64_t from = 0;
  int64_t to = 0;  // behind it
};

struct FleetOptions {
  uint32_t machines = 2500;
  int64_t days = 6;
  int64_t startEvery = 3600;  // from one start of the agent to the next
  int64_t spread = 600;       // each of these is longer or shorter by up to so much
  bool hasSentBefore = true;  // at times spread over each report's interval; else never
  Span everyoneStarts{};      // each machine starts the agent once more meanwhile
  Span outage{};              // no request is answered
  Span refusing{};            // three tickets of four are refused for rc2, rc5 and rc7
  uint64_t seed = 1;
};

// Requests of rc1, rc2, rc5, rc3, rc4, rc7 and all of them, for each quarter of an hour; those that
// get no answer are among them.
inline constexpr int64_t kQuarter = 900;
using QuarterTraffic = std::array<int64_t, 7>;
std::vector<QuarterTraffic> SimulateFleet(const FleetOptions& options);

}  // namespace ostrell
