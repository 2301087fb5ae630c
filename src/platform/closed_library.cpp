#include "platform/closed_library.h"

#include <windows.h>

#include <string_view>

#include "base/bounded_text.h"

namespace ostrell {

ClosedLibrary::ClosedLibrary(const wchar_t* fileName) {
  wchar_t program[MAX_PATH];
  const DWORD length = GetModuleFileNameW(nullptr, program, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) {
    return;
  }
  const std::wstring_view path(program, length);
  BoundedText<wchar_t, MAX_PATH> library(path.substr(0, path.rfind(L'\\') + 1));
  library.Append(fileName);
  module = LoadLibraryW(library.CStr());
}

ClosedLibrary::Address ClosedLibrary::Find(const char* nameOrOrdinal) const {
  if (module == nullptr) {
    return nullptr;
  }
  return reinterpret_cast<Address>(GetProcAddress(static_cast<HMODULE>(module), nameOrOrdinal));
}

}  // namespace ostrell
