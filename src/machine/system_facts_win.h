#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "base/redirection_win.h"
#include "machine/system_facts.h"

namespace ostrell {

// What the system facts ask of Windows. Functions that not every Windows has are looked up by name
// and are empty where they are missing. Tests put their own in place.
struct SystemApi {
  std::function<LONG(OSVERSIONINFOEXW*)> rtlGetVersion;
  std::function<decltype(IsWow64Process2)> isWow64Process2;
  RedirectionApi redirection;
  std::function<decltype(GetVersionExW)> getVersionEx = GetVersionExW;
  std::function<decltype(GetNativeSystemInfo)> getNativeSystemInfo = GetNativeSystemInfo;
  std::function<decltype(GetSystemMetrics)> getSystemMetrics = GetSystemMetrics;

  // The running system's.
  static SystemApi Loaded();
};

class WindowsFacts : public SystemFacts {
 public:
  explicit WindowsFacts(SystemApi functions = SystemApi::Loaded()) : api(std::move(functions)) {}

  std::optional<OperatingSystem> QueryOperatingSystem() const override;
  uint16_t NativeMachine() const override;
  std::optional<KernelVersion> ReadKernelVersion() const override;
  bool HasModernEventLog() const override;

  // A file's fixed version as "%d.%d.%d.%d"; empty when the file has none or cannot be read. The
  // path means what it means to a 64-bit process.
  std::string ReadFileVersion(const wchar_t* path) const;

 private:
  SystemApi api;
  mutable uint16_t machine = 0;
};

}  // namespace ostrell
