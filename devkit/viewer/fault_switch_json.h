#pragma once

#include <optional>

#include "base/json.h"
#include "devkit/report_server/fault_switches.h"

namespace ostrell {

// A fault as the page is told of it: {"name", "help", "isOn"}, and of one that is on the members of
// FaultSwitch::State.
JsonOwner DescribeSwitch(const FaultEntry& fault, const FaultSwitches::State* state);

// The other way round: an object of any members of FaultSwitch, with a seed of its own where it
// names none. Nothing for a document that is no object, or holds something else.
std::optional<FaultSwitch> SwitchOf(const json_t* wanted);

}  // namespace ostrell
