#pragma once

#include <cstddef>
#include <span>

#include "base/handle_win.h"

namespace ostrell {

struct MappingTraits {
  using Handle = HANDLE;
  static Handle Empty() { return nullptr; }
  static void Close(Handle handle) noexcept { CloseHandle(handle); }
};

struct MappedViewTraits {
  using Handle = const std::byte*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle view) noexcept { UnmapViewOfFile(view); }
};

// A whole file mapped for reading; while it is, nobody can write to it. A file that someone has
// open for writing, or an empty one, cannot be mapped.
class MappedFile {
 public:
  // `path` may be relative to the current directory.
  explicit MappedFile(const wchar_t* path);

  // 0, or the Windows error code of the step that failed: then there are no bytes.
  DWORD Error() const { return error; }
  std::span<const std::byte> Bytes() const { return {view.Get(), size}; }

 private:
  FileHandle file;
  Owner<MappingTraits> mapping;
  Owner<MappedViewTraits> view;
  size_t size = 0;
  DWORD error = ERROR_SUCCESS;
};

}  // namespace ostrell
