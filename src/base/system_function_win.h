#pragma once

#include <windows.h>

namespace ostrell {

// A function of a library of the system that is loaded already, for those that not every Windows
// has; null where it is missing.
template <class Function>
Function* SystemFunction(const wchar_t* module, const char* name) {
  const HMODULE loaded = GetModuleHandleW(module);
  const FARPROC found = loaded != nullptr ? GetProcAddress(loaded, name) : nullptr;
  return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(found));
}

}  // namespace ostrell
