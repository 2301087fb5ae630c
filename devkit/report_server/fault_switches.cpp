#include "devkit/report_server/fault_switches.h"

#include <utility>

namespace ostrell {

void FaultSwitches::Set(Fault fault, FaultSwitch how) {
  const std::scoped_lock lock(mutex);
  const uint32_t seed = how.seed;
  on.insert_or_assign(fault,
                      Counted{.state = {.how = std::move(how)}, .numbers = std::mt19937(seed)});
}

void FaultSwitches::Remove(Fault fault) {
  const std::scoped_lock lock(mutex);
  on.erase(fault);
}

void FaultSwitches::Clear() {
  const std::scoped_lock lock(mutex);
  on.clear();
}

bool FaultSwitches::Acts(Fault fault, std::string_view report) {
  const std::scoped_lock lock(mutex);
  const auto found = on.find(fault);
  if (found == on.end()) {
    return false;
  }
  auto& [state, numbers] = found->second;
  const FaultSwitch& how = state.how;
  if (!how.report.empty() && how.report != report) {
    return false;
  }
  const bool isItsTurn = state.concerned++ >= how.after && (!how.times || state.acted < *how.times);
  // The draw is the same on every machine, which a distribution of the library need not be.
  constexpr double kNumbers = 4294967296;
  if (!isItsTurn || static_cast<double>(numbers()) >= how.probability * kNumbers) {
    return false;
  }
  ++state.acted;
  return true;
}

std::map<Fault, FaultSwitches::State> FaultSwitches::All() const {
  const std::scoped_lock lock(mutex);
  std::map<Fault, State> states;
  for (const auto& [fault, counted] : on) {
    states[fault] = counted.state;
  }
  return states;
}

}  // namespace ostrell
