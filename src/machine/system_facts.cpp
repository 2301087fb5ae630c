#include "machine/system_facts.h"

namespace ostrell {
namespace {

constexpr uint32_t kPlatformWindows9x = 1;
constexpr uint32_t kPlatformNt = 2;
constexpr uint8_t kProductWorkstation = 1;
constexpr uint32_t kFirstBuildOfWindows11 = 22000;
constexpr uint16_t kMachineArm64 = 0xAA64;

uint32_t Windows9xFamily(const VersionFacts& facts) {
  if (facts.major != 4) {
    return 0;
  }
  switch (facts.minor) {
    case 0:
      return 1;
    case 10:
      return 2;
    case 90:
      return 3;
    default:
      return 0;
  }
}

uint32_t Nt5Family(const VersionFacts& facts, bool isWorkstation) {
  switch (facts.minor) {
    case 0:
      return 5;
    case 1:
      return 6;
    case 2:
      if (facts.serverR2) {
        return 8;
      }
      return isWorkstation && facts.x64Architecture ? 6 : 7;
    default:
      return 0;
  }
}

uint32_t NtFamily(const VersionFacts& facts) {
  const bool isWorkstation = facts.productType == kProductWorkstation;
  const uint32_t server = isWorkstation ? 0 : 1;
  if (facts.major < 5) {
    return 4;
  }
  if (facts.major == 5) {
    return Nt5Family(facts, isWorkstation);
  }
  if (facts.major == 6 && facts.minor <= 3) {
    return 9 + 2 * facts.minor + server;
  }
  if (facts.major == 10 && facts.minor == 0) {
    return facts.build >= kFirstBuildOfWindows11 ? 19 : 17 + server;
  }
  return 0;
}

}  // namespace

uint32_t FamilyCode(const VersionFacts& facts) {
  switch (facts.platform) {
    case kPlatformWindows9x:
      return Windows9xFamily(facts);
    case kPlatformNt:
      return NtFamily(facts);
    default:
      return 0;
  }
}

uint32_t ProcessorClass(bool x64Processor, uint16_t nativeMachine) {
  if (nativeMachine == kMachineArm64) {
    return 2;
  }
  return x64Processor ? 1 : 0;
}

}  // namespace ostrell
