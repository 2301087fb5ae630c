#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace ostrell {

// What an operation logs when it cannot find the program's folder.
struct FolderMessages {
  const wchar_t* noPath;
  const wchar_t* noFolder;
};

inline constexpr FolderMessages kCollectorFolderMessages = {
    L"GetModuleFileNameW failed, return NULL",
    L"Failed to extract directory from module path, return NULL"};

// What a system call filled in of the `buffer`, whose `length` it returned: nothing when it failed
// (0) or had to cut the path to fit, and then returned the size of the buffer. A cut path leads to
// a folder above the right one.
std::optional<std::wstring_view> WholePath(std::span<const wchar_t> buffer, size_t length);

// The folder of the running program without a backslash at its end. On failure, which a program's
// path of 260 characters or more is, too, logs one of the messages under `operation`.
std::optional<std::wstring> FindProgramFolder(const char* operation,
                                              const FolderMessages& messages);

}  // namespace ostrell
