#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ostrell {

enum class RegistryRoot { kMachine, kUser };  // HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER

// How jobs touch the registry: single values of existing keys, in the process's own view.
class Registry {
 public:
  Registry() = default;
  Registry(const Registry&) = delete;
  Registry& operator=(const Registry&) = delete;
  virtual ~Registry() = default;

  // The text of a REG_SZ or REG_EXPAND_SZ value (not expanded), up to its first zero; a value of no
  // bytes is an empty text. Nothing when key or value is missing, of another type, longer than
  // `byteLimit` (not 0), of an odd byte count or not terminated.
  virtual std::optional<std::wstring> ReadText(RegistryRoot root, const wchar_t* key,
                                               const wchar_t* name, uint32_t byteLimit) const = 0;

  // A REG_DWORD value of exactly four bytes; nothing otherwise.
  virtual std::optional<uint32_t> ReadDword(RegistryRoot root, const wchar_t* key,
                                            const wchar_t* name) const = 0;

  // What cannot be deleted stays.
  virtual void DeleteValue(RegistryRoot root, const wchar_t* key, const wchar_t* name) const = 0;
};

}  // namespace ostrell
