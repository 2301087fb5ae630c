#include <windows.h>

#include <string_view>

#include "base/bounded_text.h"
#include "base/files_win.h"
#include "platform/assumptions.h"
#include "platform/closed_library.h"

namespace ostrell {
namespace {

// A library by its bare name, such as L"policydb.dll"; never unloaded.
class ClosedLibrary {
 public:
  explicit ClosedLibrary(const wchar_t* fileName) {
    if (const auto program = WindowsFiles().ProgramPath()) {
      BoundedText<wchar_t, MAX_PATH> path(program->substr(0, program->rfind(L'\\') + 1));
      path.Append(fileName);
      module = LoadLibraryW(path.CStr());
    }
  }

  // GetProcAddress takes an ordinal in the place of the name.
  template <class Function>
  void Find(uint16_t ordinal, Function& entry) const {
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    Find(reinterpret_cast<const char*>(uintptr_t{ordinal}), entry);
  }
  template <class Function>
  void Find(const char* name, Function& entry) const {
    const FARPROC found = module != nullptr ? GetProcAddress(module, name) : nullptr;
    entry = reinterpret_cast<Function>(reinterpret_cast<void (*)()>(found));
  }

 private:
  HMODULE module = nullptr;
};

}  // namespace

PolicyDbEntries LoadPolicyDb() {
  const ClosedLibrary library(L"policydb.dll");
  PolicyDbEntries entries{};
  library.Find(9, entries.openDocument);
  library.Find(10, entries.openQuarantine);
  library.Find(13, entries.openSettingsStore);
  return entries;
}

SvclinkEntries LoadSvclink() {
  const ClosedLibrary library(L"svclink.dll");
  SvclinkEntries entries{};
  library.Find(2, entries.queryKind);
  library.Find(10, entries.createObject);
  library.Find(30, entries.takeRecord);
  return entries;
}

TraceLogEntries LoadTraceLog() {
  const ClosedLibrary library(L"tracelog.dll");
  TraceLogEntries entries{};
  library.Find(assumed::kTraceLogExport, entries.write);
  return entries;
}

void InstallCrashHandler() {
  int32_t (*install)(int32_t) = nullptr;
  ClosedLibrary(L"crashsentry.dll").Find("InstallCrashSentry", install);
  if (install != nullptr) {
    install(0);
  }
}

}  // namespace ostrell
