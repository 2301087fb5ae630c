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

// The machine identity (machine_identity_win.h) and the client id of this machine. Returns 0
// always: hardware that cannot be asked shows in the status bytes that end the machine identity,
// and a client id that cannot be had or made stays empty.
int32_t ComputeIdentity(IdentityText& machineIdentity, IdentityText& clientId);

// The installation's client id in the thread's ANSI code page: the text of HKLM
// "SOFTWARE\Velmora\Corvane\app", "ClientID" (REG_SZ or REG_EXPAND_SZ of at most 520 bytes), which
// may be empty.
//
// When there is no such text a new GUID is made and stored there, as 36 characters without braces;
// the key itself is not made, and a failure to store is not told. The result is then the GUID with
// its braces, which only this first run reports. Empty when no GUID can be made.
IdentityText ReadOrMakeClientId();

}  // namespace ostrell
