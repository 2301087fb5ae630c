#include <windows.h>

#include <commctrl.h>
#include <jansson.h>

#include <array>
#include <clocale>
#include <random>
#include <string>

#include "app/start_up.h"

namespace ostrell {

void EnterProgramFolder() {
  std::array<wchar_t, 1024> path;
  const DWORD length = GetModuleFileNameW(nullptr, path.data(), path.size());
  std::wstring folder(path.data(), length < path.size() ? length : 0);
  const size_t slash = folder.rfind(L'\\');
  if (slash != std::wstring::npos) {
    folder.resize(slash);
    SetCurrentDirectoryW(folder.c_str());
  }
}

bool BecomeOnlyInstance() {
  SetLastError(ERROR_SUCCESS);
  HANDLE mutex = CreateMutexA(nullptr, FALSE, "Global\\Velmora::qx_ostrell");
  return GetLastError() != ERROR_ALREADY_EXISTS && mutex != nullptr;
}

void SeedJson() {
  json_object_seed(std::random_device()());
}

void PrepareLocaleAndControls() {
  std::setlocale(LC_ALL, ".ACP");
  DefWindowProcW(nullptr, 0, 0, 0);  // warms up the window procedure thunk
  const INITCOMMONCONTROLSEX controls{
      .dwSize = 8,
      .dwICC = ICC_BAR_CLASSES | ICC_USEREX_CLASSES | ICC_COOL_CLASSES | ICC_INTERNET_CLASSES};
  InitCommonControlsEx(&controls);
}

}  // namespace ostrell
