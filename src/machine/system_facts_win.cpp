#include "machine/system_facts_win.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <vector>

#include "base/print.h"
#include "base/system_function_win.h"

namespace ostrell {
namespace {

constexpr UINT kWindowsDirectorySize = 512;  // characters

OSVERSIONINFOEXW EmptyVersion() {
  OSVERSIONINFOEXW version{};
  static_assert(sizeof(version) == 284);
  version.dwOSVersionInfoSize = sizeof(version);
  return version;
}

// What RtlGetVersion says; nothing when it is missing or fails.
std::optional<OSVERSIONINFOEXW> QueryRtlVersion(const SystemApi& api) {
  OSVERSIONINFOEXW version = EmptyVersion();
  return api.rtlGetVersion && api.rtlGetVersion(&version) >= 0 ? std::optional(version)
                                                               : std::nullopt;
}

std::optional<OSVERSIONINFOEXW> QueryVersion(const SystemApi& api) {
  if (const auto version = QueryRtlVersion(api)) {
    return version;
  }
  OSVERSIONINFOEXW version = EmptyVersion();
  return api.getVersionEx(reinterpret_cast<OSVERSIONINFOW*>(&version)) != 0 ? std::optional(version)
                                                                            : std::nullopt;
}

}  // namespace

SystemApi SystemApi::Loaded() {
  return {.rtlGetVersion = SystemFunction<LONG(OSVERSIONINFOEXW*)>(L"ntdll.dll", "RtlGetVersion"),
          .isWow64Process2 =
              SystemFunction<decltype(::IsWow64Process2)>(L"Kernel32.dll", "IsWow64Process2"),
          .redirection = RedirectionApi::Loaded()};
}

std::optional<OperatingSystem> WindowsFacts::QueryOperatingSystem() const {
  const auto version = QueryVersion(api);
  if (!version) {
    return std::nullopt;
  }
  SYSTEM_INFO system{};
  api.getNativeSystemInfo(&system);
  const VersionFacts facts = {
      .platform = version->dwPlatformId,
      .major = version->dwMajorVersion,
      .minor = version->dwMinorVersion,
      .build = version->dwBuildNumber,
      .productType = version->wProductType,
      .x64Architecture = system.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_AMD64,
      .serverR2 = api.getSystemMetrics(SM_SERVERR2) != 0};
  return OperatingSystem{.family = FamilyCode(facts),
                         .x64Processor = system.dwProcessorType == PROCESSOR_AMD_X8664,
                         .build = facts.build};
}

uint16_t WindowsFacts::NativeMachine() const {
  USHORT process = 0;
  USHORT native = 0;
  if (machine == 0 && api.isWow64Process2 &&
      api.isWow64Process2(GetCurrentProcess(), &process, &native)) {
    machine = native;
  }
  return machine;
}

std::string WindowsFacts::ReadFileVersion(const wchar_t* path) const {
  const RealFileSystem real(api.redirection);
  DWORD ignored = 0;
  std::vector<std::byte> resource(GetFileVersionInfoSizeW(path, &ignored));
  void* root = nullptr;
  UINT length = 0;
  if (resource.empty() ||
      !GetFileVersionInfoW(path, 0, static_cast<DWORD>(resource.size()), resource.data()) ||
      !VerQueryValueW(resource.data(), L"\\", &root, &length) || root == nullptr ||
      length < sizeof(VS_FIXEDFILEINFO)) {
    return {};
  }
  const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(root);
  return Print("%d.%d.%d.%d", HIWORD(fixed->dwFileVersionMS), LOWORD(fixed->dwFileVersionMS),
               HIWORD(fixed->dwFileVersionLS), LOWORD(fixed->dwFileVersionLS));
}

std::optional<KernelVersion> WindowsFacts::ReadKernelVersion() const {
  std::array<wchar_t, kWindowsDirectorySize> directory;
  const UINT length = GetWindowsDirectoryW(directory.data(), kWindowsDirectorySize);
  if (length == 0 || length >= directory.size()) {
    return std::nullopt;
  }
  const std::wstring path = directory.data() + std::wstring(L"\\System32\\ntoskrnl.exe");
  const std::string text = ReadFileVersion(path.c_str());
  if (text.empty()) {
    return std::nullopt;
  }
  KernelVersion version;
  const char* rest = text.c_str();
  for (uint32_t* const part : {&version.major, &version.minor, &version.build, &version.revision}) {
    char* end = nullptr;
    *part = static_cast<uint32_t>(std::strtoul(rest, &end, 10));
    rest = *end == '.' ? end + 1 : end;
  }
  return version;
}

bool WindowsFacts::HasModernEventLog() const {
  const auto version = QueryRtlVersion(api);
  return version && version->dwMajorVersion >= 6;
}

}  // namespace ostrell
