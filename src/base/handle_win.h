#pragma once

#include <windows.h>

#include "base/owner.h"

namespace ostrell {

// A handle of CreateFileW, whose empty value is INVALID_HANDLE_VALUE.
struct FileHandleTraits {
  using Handle = HANDLE;
  static Handle Empty() { return INVALID_HANDLE_VALUE; }
  static void Close(Handle handle) noexcept { CloseHandle(handle); }
};
using FileHandle = Owner<FileHandleTraits>;

// Any other kernel handle, whose empty value is null.
using KernelHandle = ClosedBy<HANDLE, &CloseHandle>;

}  // namespace ostrell
