#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include "devkit/report_server/faults.h"

namespace ostrell {

// When a fault that is switched on acts: of the requests that it concerns, and that are of
// `report` where one is named, not at the first `after`, then at `times`, each with `probability`.
struct FaultSwitch {
  std::string report{};  // "rc2"; empty for all
  uint64_t after = 0;
  std::optional<uint64_t> times{};  // nothing for all
  double probability = 1;           // 0 to 1
  uint32_t seed = 0;                // of the numbers that decide by probability
};

// The faults that are switched on while the server runs. All operations may be called from any
// thread.
class FaultSwitches {
 public:
  // Takes the place of an earlier switch of that fault, and counts anew.
  void Set(Fault fault, FaultSwitch how = {});
  void Remove(Fault fault);
  void Clear();

  // Whether the fault acts at a request of that report that it concerns; counts it.
  bool Acts(Fault fault, std::string_view report);

  struct State {
    FaultSwitch how;
    uint64_t concerned = 0;  // requests so far
    uint64_t acted = 0;
  };
  std::map<Fault, State> All() const;

 private:
  struct Counted {
    State state;
    std::mt19937 numbers;
  };

  mutable std::mutex mutex;
  std::map<Fault, Counted> on;
};

}  // namespace ostrell
