#pragma once

#include <cstddef>
#include <cstdint>

#include "base/bounded_text.h"

namespace ostrell {

using IdentityText = BoundedText<char, 128>;

// The two identifiers that every report carries, process-wide: empty at first, filled once at
// start-up, then only read.
IdentityText& MachineIdentity();  // query key "u": 40 upper-case hexadecimal characters
IdentityText& ClientId();         // query key "regid": the installation's GUID

// Fills both. Returns 0 always: hardware that cannot be asked shows in the status bytes that end
// the machine identity, and a client id that cannot be had or made stays empty.
int32_t ComputeIdentity(IdentityText& machineIdentity, IdentityText& clientId);

}  // namespace ostrell
