#include <windows.h>

#include <objbase.h>

#include <optional>
#include <string>

#include "base/owner.h"
#include "base/registry_win.h"
#include "env/client_identity.h"
#include "machine/machine_identity_win.h"

namespace ostrell {
namespace {

constexpr wchar_t kKey[] = L"SOFTWARE\\Velmora\\Corvane\\app";
constexpr wchar_t kValue[] = L"ClientID";
constexpr DWORD kMaxBytes = 520;

using ComText = ClosedBy<wchar_t*, &CoTaskMemFree>;

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

// In the thread's code page (CP_THREAD_ACP). Characters that it lacks become its default character;
// empty when the conversion fails.
std::string ThreadAnsiFromWide(std::wstring_view text) {
  const int length = static_cast<int>(text.size());
  const int size =
      WideCharToMultiByte(CP_THREAD_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_THREAD_ACP, 0, text.data(), length, result.data(), size, nullptr, nullptr);
  return result;
}

}  // namespace

IdentityText& MachineIdentity() {
  static IdentityText text;
  return text;
}

IdentityText& ClientId() {
  static IdentityText text;
  return text;
}

int32_t ComputeIdentity(IdentityText& machineIdentity, IdentityText& clientId) {
  machineIdentity = IdentityText(ComputeMachineIdentity({}));
  clientId = ReadOrMakeClientId();
  return 0;
}

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
