#include "machine/system_facts_win.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <vector>

#include "base/print.h"

namespace ostrell {
namespace {

constexpr UINT kWindowsDirectorySize = 512;  // characters

template <class Function>
Function* FindFunction(const wchar_t* module, const char* name) {
  const HMODULE loaded = GetModuleHandleW(module);
  if (loaded == nullptr) {
    return nullptr;
  }
  return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(GetProcAddress(loaded, name)));
}

OSVERSIONINFOEXW EmptyVersion() {
  OSVERSIONINFOEXW version{};
  static_assert(sizeof(version) == 284);
  version.dwOSVersionInfoSize = sizeof(version);
  return version;
}

std::optional<OSVERSIONINFOEXW> QueryVersion(const SystemApi& api) {
  if (const auto version = QueryRtlVersion(api)) {
    return version;
  }
  OSVERSIONINFOEXW version = EmptyVersion();
  return api.getVersionEx(reinterpret_cast<OSVERSIONINFOW*>(&version)) != 0 ? std::optional(version)
                                                                            : std::nullopt;
}

// As long as this lives, a 32-bit process sees the real System32 folder.
class WithoutFileRedirection {
 public:
  explicit WithoutFileRedirection(const SystemApi& systemApi)
      : api(systemApi),
        isOff(api.disableRedirection && api.revertRedirection &&
              api.disableRedirection(&oldValue)) {}
  ~WithoutFileRedirection() {
    if (isOff) {
      api.revertRedirection(oldValue);
    }
  }
  WithoutFileRedirection(const WithoutFileRedirection&) = delete;
  WithoutFileRedirection(WithoutFileRedirection&&) = delete;
  WithoutFileRedirection& operator=(const WithoutFileRedirection&) = delete;
  WithoutFileRedirection& operator=(WithoutFileRedirection&&) = delete;

 private:
  const SystemApi& api;
  void* oldValue = nullptr;
  bool isOff;
};

}  // namespace

const SystemApi& SystemApi::Loaded() {
  static const SystemApi api = {
      .rtlGetVersion = FindFunction<LONG(OSVERSIONINFOEXW*)>(L"ntdll.dll", "RtlGetVersion"),
      .isWow64Process2 =
          FindFunction<decltype(IsWow64Process2)>(L"Kernel32.dll", "IsWow64Process2"),
      .disableRedirection = FindFunction<decltype(Wow64DisableWow64FsRedirection)>(
          L"kernel32", "Wow64DisableWow64FsRedirection"),
      .revertRedirection = FindFunction<decltype(Wow64RevertWow64FsRedirection)>(
          L"kernel32", "Wow64RevertWow64FsRedirection")};
  return api;
}

std::optional<OSVERSIONINFOEXW> QueryRtlVersion(const SystemApi& api) {
  OSVERSIONINFOEXW version = EmptyVersion();
  return api.rtlGetVersion && api.rtlGetVersion(&version) >= 0 ? std::optional(version)
                                                               : std::nullopt;
}

std::optional<OperatingSystem> QueryOperatingSystem(const SystemApi& api) {
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

uint16_t NativeMachine(const SystemApi& api) {
  USHORT process = 0;
  USHORT native = 0;
  if (!api.isWow64Process2 || !api.isWow64Process2(GetCurrentProcess(), &process, &native)) {
    return 0;
  }
  return native;
}

std::string ReadFileVersion(const SystemApi& api, const wchar_t* path) {
  const WithoutFileRedirection guard(api);
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

std::optional<OperatingSystem> QueryOperatingSystem() {
  return QueryOperatingSystem(SystemApi::Loaded());
}

uint16_t NativeMachine() {
  static uint16_t machine = 0;
  if (machine == 0) {
    machine = NativeMachine(SystemApi::Loaded());
  }
  return machine;
}

std::string ReadFileVersion(const wchar_t* path) {
  return ReadFileVersion(SystemApi::Loaded(), path);
}

std::optional<KernelVersion> ReadKernelVersion() {
  std::array<wchar_t, kWindowsDirectorySize> directory;
  const UINT length = GetWindowsDirectoryW(directory.data(), kWindowsDirectorySize);
  if (length == 0 || length >= directory.size()) {
    return std::nullopt;
  }
  const std::wstring path = directory.data() + std::wstring(L"\\System32\\ntoskrnl.exe");
  KernelVersion version;
  if (std::sscanf(ReadFileVersion(path.c_str()).c_str(), "%u.%u.%u.%u", &version.major,
                  &version.minor, &version.build, &version.revision) != 4) {
    return std::nullopt;
  }
  return version;
}

}  // namespace ostrell
