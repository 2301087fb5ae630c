#pragma once

#include <cstdint>
#include <optional>

namespace ostrell {

// What Windows says of itself. RtlGetVersion fills it, or GetVersionExW where that fails.
struct VersionFacts {
  uint32_t platform;  // VER_PLATFORM_WIN32_WINDOWS 1, VER_PLATFORM_WIN32_NT 2
  uint32_t major;
  uint32_t minor;
  uint32_t build;
  uint8_t productType;  // VER_NT_WORKSTATION 1
  bool x64Architecture;
  bool serverR2;  // GetSystemMetrics(SM_SERVERR2)
};

// The operating-system family code, report field "s"; 0 for a system that the table does not name.
uint32_t FamilyCode(const VersionFacts& facts);

// Report field "x": 2 on an ARM64 machine, else 1 on an x64 processor, else 0.
uint32_t ProcessorClass(bool x64Processor, uint16_t nativeMachine);

struct OperatingSystem {
  uint32_t family;
  bool x64Processor;
  uint32_t build;
};

struct KernelVersion {
  uint32_t major;
  uint32_t minor;
  uint32_t build;
  uint32_t revision;
};

// Asks the system at every call.
class SystemFacts {
 public:
  SystemFacts() = default;
  SystemFacts(const SystemFacts&) = delete;
  SystemFacts& operator=(const SystemFacts&) = delete;
  virtual ~SystemFacts() = default;

  // Nothing when neither version query works.
  virtual std::optional<OperatingSystem> QueryOperatingSystem() const = 0;

  // Native machine type of IsWow64Process2 (IMAGE_FILE_MACHINE_*); 0 when unavailable. The first
  // answer that is not 0 is kept.
  virtual uint16_t NativeMachine() const = 0;

  // The version of ntoskrnl.exe; nothing when it cannot be read.
  virtual std::optional<KernelVersion> ReadKernelVersion() const = 0;

  // True on Windows Vista and later; false when the version cannot be found.
  virtual bool HasModernEventLog() const = 0;
};

}  // namespace ostrell
