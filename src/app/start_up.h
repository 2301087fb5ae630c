#pragma once

namespace ostrell {

// Makes the program's folder the current one, so that relative file names of the whole run are
// beside the program. Failures, of which a program's path of 1024 characters or more is one, are
// ignored.
void EnterProgramFolder();

// True when no other copy runs on this machine, in any session; false also when the mutex cannot be
// made. It is held until the process ends.
bool BecomeOnlyInstance();

// Gives jansson the seed of its hash tables for the process; by itself it would open a crypto
// provider for it. Throws std::exception without random numbers.
void SeedJson();

// The C locale of the system's ANSI code page, and the common controls.
void PrepareLocaleAndControls();

}  // namespace ostrell
