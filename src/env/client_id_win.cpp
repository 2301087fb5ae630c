#include "env/client_id_win.h"

#include <windows.h>

#include <objbase.h>

#include <optional>
#include <string>

#include "base/owner.h"
#include "base/registry_win.h"
#include "base/text_win.h"

namespace ostrell {
namespace {

constexpr wchar_t kKey[] = L"SOFTWARE\\Velmora\\Corvane\\app";
constexpr wchar_t kValue[] = L"ClientID";
constexpr DWORD kMaxBytes = 520;

struct ComTextTraits {
  using Handle = wchar_t*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle text) noexcept { CoTaskMemFree(text); }
};
using ComText = Owner<ComTextTraits>;

// In braces, upper case; empty on failure.
std::wstring NewGuid() {
  GUID guid;
  ComText text;
  if (FAILED(CoCreateGuid(&guid)) || FAILED(StringFromCLSID(guid, text.Receive()))) {
    return {};
  }
  return text.Get();
}

std::wstring WithoutBraces(const std::wstring& guid) {
  const size_t start = guid.find_first_not_of(L'{');
  const size_t end = guid.find_last_not_of(L'}') + 1;
  return guid.substr(start, end - start);
}

void Store(const std::wstring& clientId) {
  RegistryKey key;
  if (OpenRegistryKey(HKEY_LOCAL_MACHINE, kKey, KEY_ALL_ACCESS, key) == ERROR_SUCCESS) {
    const size_t bytes = (clientId.size() + 1) * sizeof(wchar_t);
    RegSetValueExW(key.Get(), kValue, 0, REG_SZ, reinterpret_cast<const BYTE*>(clientId.c_str()),
                   static_cast<DWORD>(bytes));
  }
}

}  // namespace

IdentityText ReadOrMakeClientId() {
  std::optional<std::wstring> text = ReadRegistryText(HKEY_LOCAL_MACHINE, kKey, kValue, kMaxBytes);
  if (!text) {
    text = NewGuid();
    if (!text->empty()) {
      Store(WithoutBraces(*text));
    }
  }
  return IdentityText(ThreadAnsiFromWide(*text));
}

}  // namespace ostrell
