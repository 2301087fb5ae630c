#pragma once

#include "env/client_identity.h"

namespace ostrell {

// The installation's client id in the thread's ANSI code page: the text of HKLM
// "SOFTWARE\Velmora\Corvane\app", "ClientID" (REG_SZ or REG_EXPAND_SZ of at most 520 bytes), which
// may be empty.
//
// When there is no such text a new GUID is made and stored there, as 36 characters without braces;
// the key itself is not made, and a failure to store is not told. The result is then the GUID with
// its braces, which only this first run reports. Empty when no GUID can be made.
IdentityText ReadOrMakeClientId();

}  // namespace ostrell
