#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

#include "base/handle_win.h"

namespace ostrell {

// The few file operations that the stand-ins share.

// A file of more bytes is not read.
inline constexpr size_t kFileLimit = size_t{16} << 20;

// Full path of a file in the folder of the running program; nothing when the program's own path
// does not fit MAX_PATH.
std::optional<std::wstring> PathBesideProgram(const wchar_t* fileName);

// The whole content of a file, opened with full sharing.
struct FileContent {
  DWORD error;       // 0 or a Windows error code; ERROR_FILE_TOO_LARGE past the limit
  std::string text;  // empty on failure
};
FileContent ReadWholeFile(const std::wstring& path);

// Writes `text` in one call; false unless all of it was taken.
bool WriteOnce(const FileHandle& file, std::string_view text);

}  // namespace ostrell
