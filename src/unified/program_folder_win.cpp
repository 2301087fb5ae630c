#include "unified/program_folder_win.h"

#include <windows.h>

#include "platform/tracelog.h"

namespace ostrell {

std::optional<std::wstring> FindProgramFolder(const char* operation,
                                              const FolderMessages& messages) {
  wchar_t path[MAX_PATH];
  const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
  if (length == 0) {
    TraceLogger(operation, __LINE__, 1)(messages.noPath);
    return std::nullopt;
  }
  const std::wstring program(path, length);
  const size_t slash = program.rfind(L'\\');
  if (slash == std::wstring::npos) {
    TraceLogger(operation, __LINE__, 1)(messages.noFolder);
    return std::nullopt;
  }
  return program.substr(0, slash);
}

}  // namespace ostrell
