#pragma once

#include "platform/policydb.h"
#include "platform/svclink.h"
#include "platform/tracelog.h"

namespace ostrell {

// The product's closed libraries, loaded at run time from the program's own directory by full path,
// so that no other folder can supply them. They stay loaded until the process ends. A library or
// entry that is missing is null in the table, and its wrapper then acts as on any failure of it;
// all are missing where the program's path has 260 characters or more.
PolicyDbEntries LoadPolicyDb();  // "policydb.dll"
SvclinkEntries LoadSvclink();    // "svclink.dll"
TraceLogEntries LoadTraceLog();  // "tracelog.dll"

// Loads "crashsentry.dll" and calls its InstallCrashSentry(0). The library is optional: without it,
// or without the export, nothing happens.
void InstallCrashHandler();

}  // namespace ostrell
