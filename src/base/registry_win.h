#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/owner.h"

namespace ostrell {

struct RegistryKeyTraits {
  using Handle = HKEY;
  static Handle Empty() { return nullptr; }
  static void Close(Handle key) noexcept { RegCloseKey(key); }
};
using RegistryKey = Owner<RegistryKeyTraits>;

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

// The text of a REG_SZ or REG_EXPAND_SZ value (not expanded), up to its first zero; a value of no
// bytes is an empty text. Nothing when the value has another type, an odd byte count or no
// terminating zero.
std::optional<std::wstring> TextOfRegistryValue(const RegistryValue& value);

// The same read in one step; nothing too when key or value is missing or longer than `byteLimit`.
std::optional<std::wstring> ReadRegistryText(HKEY root, const wchar_t* subkey, const wchar_t* name,
                                             DWORD byteLimit);

// A REG_DWORD value of exactly four bytes; nothing otherwise.
std::optional<uint32_t> ReadRegistryDword(HKEY root, const wchar_t* subkey, const wchar_t* name);

}  // namespace ostrell
