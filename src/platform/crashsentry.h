#pragma once

namespace ostrell {

// Loads "crashsentry.dll" and calls its InstallCrashSentry(0). The library is optional: without it,
// or without the export, nothing happens.
void InstallCrashHandler();

}  // namespace ostrell
