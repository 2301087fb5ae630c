#include "base/registry_win.h"

#include <cstring>
#include <utility>

#include "base/registry_text.h"

namespace ostrell {

LSTATUS OpenRegistryKey(HKEY root, const wchar_t* subkey, REGSAM access, RegistryKey& key) {
  return RegOpenKeyExW(root, subkey, 0, access, key.Receive());
}

RegistryValue QueryRegistryValue(HKEY key, const wchar_t* name, DWORD byteLimit) {
  DWORD type = REG_NONE;
  DWORD size = byteLimit;
  std::vector<std::byte> data(byteLimit);
  const LSTATUS error =
      RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &size);
  data.resize(error == ERROR_SUCCESS ? size : 0);
  return {error, type, std::move(data)};
}

std::optional<std::wstring> TextOfRegistryValue(const RegistryValue& value) {
  if (value.error != ERROR_SUCCESS || (value.type != REG_SZ && value.type != REG_EXPAND_SZ)) {
    return std::nullopt;
  }
  return TerminatedText(value.data);
}

std::optional<std::wstring> ReadRegistryText(HKEY root, const wchar_t* subkey, const wchar_t* name,
                                             DWORD byteLimit) {
  RegistryKey key;
  if (OpenRegistryKey(root, subkey, KEY_READ, key) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  return TextOfRegistryValue(QueryRegistryValue(key.Get(), name, byteLimit));
}

std::optional<uint32_t> ReadRegistryDword(HKEY root, const wchar_t* subkey, const wchar_t* name) {
  RegistryKey key;
  if (OpenRegistryKey(root, subkey, KEY_READ, key) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  uint32_t number = 0;
  const RegistryValue value = QueryRegistryValue(key.Get(), name, sizeof(number));
  if (value.error != ERROR_SUCCESS || value.type != REG_DWORD ||
      value.data.size() != sizeof(number)) {
    return std::nullopt;
  }
  std::memcpy(&number, value.data.data(), sizeof(number));
  return number;
}

}  // namespace ostrell
