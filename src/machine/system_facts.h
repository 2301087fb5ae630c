#pragma once

#include <cstdint>
#include <optional>
#include <string>

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

struct OperatingSystem {
  uint32_t family;
  bool x64Processor;
  uint32_t build;
};
// Nothing when neither version query works.
std::optional<OperatingSystem> QueryOperatingSystem();

// Native machine type of IsWow64Process2 (IMAGE_FILE_MACHINE_*); 0 when unavailable. Kept for the
// process after the first non-zero answer.
uint16_t NativeMachine();

// Report field "x": 2 on an ARM64 machine, else 1 on an x64 processor, else 0.
uint32_t ProcessorClass(bool x64Processor, uint16_t nativeMachine);

// A file's fixed version as "%d.%d.%d.%d"; empty when the file has none or cannot be read. WOW64
// redirection is off for the reading.
std::string ReadFileVersion(const wchar_t* path);

struct KernelVersion {
  uint32_t major;
  uint32_t minor;
  uint32_t build;
  uint32_t revision;
};
// The version of ntoskrnl.exe; nothing when it cannot be read.
std::optional<KernelVersion> ReadKernelVersion();

}  // namespace ostrell
