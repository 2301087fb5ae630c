#include "app/process_hardening_win.h"

#include "base/system_function_win.h"

namespace ostrell {
namespace {

struct MitigationPolicy {
  int number;   // of PROCESS_MITIGATION_POLICY
  DWORD flags;  // of its structure
};

// The build's headers do not name all of them (winnt.h of the vendor's documentation does).
constexpr MitigationPolicy kPolicies[] = {
    {10, 4},  // ProcessImageLoadPolicy: PreferSystem32Images
    {6, 1},   // ProcessExtensionPointDisablePolicy: DisableExtensionPoints
    {16, 1},  // ProcessRedirectionTrustPolicy: EnforceRedirectionTrust
};

}  // namespace

void HardenProcess() {
  HardenProcess({.setMitigationPolicy = SystemFunction<decltype(SetProcessMitigationPolicy)>(
                     L"kernel32", "SetProcessMitigationPolicy"),
                 .setHeapInformation = SystemFunction<decltype(HeapSetInformation)>(
                     L"kernel32", "HeapSetInformation")});
}

void HardenProcess(const ProcessProtectionApi& api) {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
  if (api.setHeapInformation != nullptr) {
    api.setHeapInformation(nullptr, HeapEnableTerminationOnCorruption, nullptr, 0);
  }
  if (api.setMitigationPolicy == nullptr) {
    return;
  }
  for (const MitigationPolicy& policy : kPolicies) {
    DWORD flags = policy.flags;
    api.setMitigationPolicy(static_cast<PROCESS_MITIGATION_POLICY>(policy.number), &flags,
                            sizeof(flags));
  }
}

}  // namespace ostrell
