#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "base/registry_win.h"

namespace ostrell {

// For tests: as long as this lives, HKEY_LOCAL_MACHINE and HKEY_CURRENT_USER of this process are
// two empty keys under a key of its own. The keys are deleted at the end. One at a time.
class PrivateRegistry {
 public:
  PrivateRegistry() {
    RegDeleteTreeW(HKEY_CURRENT_USER, folder.c_str());  // what a crashed process left
    Redirect(HKEY_LOCAL_MACHINE, L"\\machine");
    Redirect(HKEY_CURRENT_USER, L"\\user");
  }
  ~PrivateRegistry() {
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, folder.c_str()), ERROR_SUCCESS);
  }
  PrivateRegistry(const PrivateRegistry&) = delete;
  PrivateRegistry& operator=(const PrivateRegistry&) = delete;

  // Makes the key where it is missing. An empty `subkey` is the root itself.
  static RegistryKey MakeKey(HKEY root, const wchar_t* subkey) {
    RegistryKey key;
    EXPECT_EQ(RegCreateKeyExW(root, subkey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.Receive(),
                              nullptr),
              ERROR_SUCCESS);
    return key;
  }

  // Stores exactly these bytes.
  static void SetBytes(HKEY root, const wchar_t* subkey, const wchar_t* name, DWORD type,
                       std::string_view bytes) {
    // Windows adds to a text without terminator the zero that follows it in memory.
    const std::string guarded = std::string(bytes) + "\xFF\xFF";
    const RegistryKey key = MakeKey(root, subkey);
    EXPECT_EQ(
        RegSetValueExW(key.Get(), name, 0, type, reinterpret_cast<const BYTE*>(guarded.data()),
                       static_cast<DWORD>(bytes.size())),
        ERROR_SUCCESS);
  }

  // Stores exactly these characters: a terminator only where the text holds it.
  static void SetCharacters(HKEY root, const wchar_t* subkey, const wchar_t* name, DWORD type,
                            std::wstring_view text) {
    SetBytes(root, subkey, name, type,
             {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)});
  }

  // REG_SZ with its terminator.
  static void SetText(HKEY root, const wchar_t* subkey, const wchar_t* name,
                      const std::wstring& text) {
    SetCharacters(root, subkey, name, REG_SZ, {text.c_str(), text.size() + 1});
  }

 private:
  void Redirect(HKEY predefined, const wchar_t* name) {
    // Made under the real HKEY_CURRENT_USER: the user's hive is redirected last.
    const RegistryKey target = MakeKey(HKEY_CURRENT_USER, (folder + name).c_str());
    EXPECT_EQ(RegOverridePredefKey(predefined, target.Get()), ERROR_SUCCESS);
  }

  const std::wstring folder = L"Software\\OstrellTest" + std::to_wstring(GetCurrentProcessId());
};

}  // namespace ostrell
