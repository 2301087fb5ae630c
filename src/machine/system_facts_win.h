#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "machine/system_facts.h"

namespace ostrell {

// What the system facts ask of Windows. Functions that not every Windows has are looked up by name
// and are empty where they are missing. Tests put their own in place.
struct SystemApi {
  std::function<LONG(OSVERSIONINFOEXW*)> rtlGetVersion;
  std::function<decltype(IsWow64Process2)> isWow64Process2;
  std::function<decltype(Wow64DisableWow64FsRedirection)> disableRedirection;
  std::function<decltype(Wow64RevertWow64FsRedirection)> revertRedirection;
  std::function<decltype(GetVersionExW)> getVersionEx = GetVersionExW;
  std::function<decltype(GetNativeSystemInfo)> getNativeSystemInfo = GetNativeSystemInfo;
  std::function<decltype(GetSystemMetrics)> getSystemMetrics = GetSystemMetrics;

  // The running system.
  static const SystemApi& Loaded();
};

// What RtlGetVersion says; nothing when it is missing or fails.
std::optional<OSVERSIONINFOEXW> QueryRtlVersion(const SystemApi& api);

std::optional<OperatingSystem> QueryOperatingSystem(const SystemApi& api);

// Asks anew at every call.
uint16_t NativeMachine(const SystemApi& api);

std::string ReadFileVersion(const SystemApi& api, const wchar_t* path);

}  // namespace ostrell
