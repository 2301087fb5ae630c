#include "base/registry_win.h"

#include <utility>

#include "base/bytes.h"
#include "base/registry_text.h"

namespace ostrell {
namespace {

HKEY KeyOf(RegistryRoot root) {
  return root == RegistryRoot::kMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

}  // namespace

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

std::optional<std::wstring> WindowsRegistry::ReadText(RegistryRoot root, const wchar_t* key,
                                                      const wchar_t* name,
                                                      uint32_t byteLimit) const {
  return ReadRegistryText(KeyOf(root), key, name, byteLimit);
}

std::optional<uint32_t> WindowsRegistry::ReadDword(RegistryRoot root, const wchar_t* key,
                                                   const wchar_t* name) const {
  RegistryKey opened;
  if (OpenRegistryKey(KeyOf(root), key, KEY_READ, opened) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  const RegistryValue value = QueryRegistryValue(opened.Get(), name, sizeof(uint32_t));
  return value.type == REG_DWORD ? ReadLittleEndian<uint32_t>(value.data, 0) : std::nullopt;
}

void WindowsRegistry::DeleteValue(RegistryRoot root, const wchar_t* key,
                                  const wchar_t* name) const {
  RegistryKey opened;
  if (OpenRegistryKey(KeyOf(root), key, KEY_ALL_ACCESS, opened) == ERROR_SUCCESS) {
    RegDeleteValueW(opened.Get(), name);
  }
}

}  // namespace ostrell
