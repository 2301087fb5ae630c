#include <windows.h>

#include "base/owner.h"
#include "eventlog/system_error_text.h"

namespace eventlog {
namespace {

struct LocalTextTraits {
  using Handle = wchar_t*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle text) noexcept { LocalFree(text); }
};

}  // namespace

std::wstring SystemErrorText(uint32_t code) {
  constexpr DWORD kFlags =
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
  static_assert(kFlags == 0x1300);
  constexpr DWORD kNeutralLanguage = MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT);
  ostrell::Owner<LocalTextTraits> text;
  // With that flag the function takes the address of a pointer in the place of a buffer.
  const DWORD length = FormatMessageW(kFlags, nullptr, code, kNeutralLanguage,
                                      reinterpret_cast<wchar_t*>(text.Receive()), 0, nullptr);
  return text ? std::wstring(text.Get(), length)
              : L"Unknown error (code: " + std::to_wstring(code) + L")";
}

}  // namespace eventlog
