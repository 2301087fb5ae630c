#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "base/handle_win.h"

namespace ostrell {

struct MappedViewTraits {
  using Handle = const std::byte*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle view) noexcept { UnmapViewOfFile(view); }
};

// A file mapped for reading. An empty one cannot be mapped. As long as it is mapped the system lets
// nobody cut it.
class MappedFile {
 public:
  // The whole file; nobody else can write to it, and one that someone has open for writing cannot
  // be mapped. `path` may be relative to the current directory.
  explicit MappedFile(const wchar_t* path);

  // 0, or the Windows error code of the step that failed: then there are no bytes.
  DWORD Error() const { return error; }
  std::span<const std::byte> Bytes() const { return {view.Get(), size}; }

 private:
  FileHandle file;
  KernelHandle mapping;
  Owner<MappedViewTraits> view;
  size_t size = 0;
  DWORD error = ERROR_SUCCESS;
};

}  // namespace ostrell
