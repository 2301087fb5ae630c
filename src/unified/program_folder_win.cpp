#include "unified/program_folder_win.h"

#include <windows.h>

#include "platform/tracelog.h"

namespace ostrell {

std::optional<std::wstring_view> WholePath(std::span<const wchar_t> buffer, size_t length) {
  if (length == 0 || length >= buffer.size()) {
    return std::nullopt;
  }
  return std::wstring_view(buffer.data(), length);
}

std::optional<std::wstring> FindProgramFolder(const char* operation,
                                              const FolderMessages& messages) {
  wchar_t path[MAX_PATH];
  const auto program = WholePath(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
  if (!program) {
    TraceLogger(operation, __LINE__, 1)(messages.noPath);
    return std::nullopt;
  }
  const size_t slash = program->rfind(L'\\');
  if (slash == std::wstring_view::npos) {
    TraceLogger(operation, __LINE__, 1)(messages.noFolder);
    return std::nullopt;
  }
  return std::wstring(program->substr(0, slash));
}

}  // namespace ostrell
