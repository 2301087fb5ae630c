#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/owner.h"
#include "base/registry.h"

namespace ostrell {

using RegistryKey = ClosedBy<HKEY, &RegCloseKey>;

// Opens an existing key in the process's own view. Returns 0 or a Windows error code; `key` is
// empty on failure.
LSTATUS OpenRegistryKey(HKEY root, const wchar_t* subkey, REGSAM access, RegistryKey& key);

// A value as it is stored, of at most `byteLimit` (not 0) bytes. `data` is empty on failure.
struct RegistryValue {
  LSTATUS error;  // 0; ERROR_MORE_DATA when the value has more than `byteLimit` bytes
  DWORD type;
  std::vector<std::byte> data;
};
RegistryValue QueryRegistryValue(HKEY key, const wchar_t* name, DWORD byteLimit);

// The text of a value and its reading, as Registry::ReadText has them.
std::optional<std::wstring> TextOfRegistryValue(const RegistryValue& value);
std::optional<std::wstring> ReadRegistryText(HKEY root, const wchar_t* key, const wchar_t* name,
                                             DWORD byteLimit);

// The registry of this machine.
class WindowsRegistry : public Registry {
 public:
  std::optional<std::wstring> ReadText(RegistryRoot root, const wchar_t* key, const wchar_t* name,
                                       uint32_t byteLimit) const override;
  std::optional<uint32_t> ReadDword(RegistryRoot root, const wchar_t* key,
                                    const wchar_t* name) const override;
  void DeleteValue(RegistryRoot root, const wchar_t* key, const wchar_t* name) const override;
};

}  // namespace ostrell
