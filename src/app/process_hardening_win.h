#pragma once

#include <windows.h>

namespace ostrell {

// The functions of kernel32 that old systems lack; a missing one is null.
struct ProcessProtectionApi {
  decltype(&SetProcessMitigationPolicy) setMitigationPolicy;
  decltype(&HeapSetInformation) setHeapInformation;
};

// Gives up, before anything foreign is touched, what this process never needs and an attacker could
// use; what the system does not know is left out without a word:
//
//   - libraries of the system come from its own folder, also where one of the same name lies beside
//     the program;
//   - input methods, hooks and the like of other programs are not loaded;
//   - links (junctions, mount points) that an account without administrator's rights has made are
//     not followed, by no open, deletion or listing; those that an administrator made still are;
//   - damage to the heap ends the process;
//   - no box of the system's asks for a medium or reports a damaged library: the call fails
//   instead.
//
// There is no policy on generated code, control flow, child processes or signatures: the product's
// closed libraries live in this process.
void HardenProcess();
void HardenProcess(const ProcessProtectionApi& api);

}  // namespace ostrell
