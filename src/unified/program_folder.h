#pragma once

#include <optional>
#include <string>

#include "env/run.h"

namespace ostrell {

// What an operation logs when it cannot find the program's folder.
struct FolderMessages {
  const wchar_t* noPath;
  const wchar_t* noFolder;
};

inline constexpr FolderMessages kCollectorFolderMessages = {
    L"GetModuleFileNameW failed, return NULL",
    L"Failed to extract directory from module path, return NULL"};

// The folder of the running program without a backslash at its end. On failure logs one of the
// messages under `operation`.
std::optional<std::wstring> FindProgramFolder(const Run& run, const char* operation,
                                              const FolderMessages& messages);

}  // namespace ostrell
