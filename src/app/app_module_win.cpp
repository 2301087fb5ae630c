#include "app/app_module_win.h"

#include <new>

namespace ostrell {

HRESULT COstrellAppModule::Initialise() {
  if (InitializeCriticalSectionAndSpinCount(&moduleLock, 0) == 0) {
    return E_OUTOFMEMORY;  // only systems before Windows Vista
  }
  mainThreadId = GetCurrentThreadId();
  settingChangeWindow = nullptr;
  messageLoopMap.reset(new (std::nothrow) MessageLoopMap);
  return messageLoopMap ? S_OK : E_OUTOFMEMORY;
}

void COstrellAppModule::Terminate() {
  EnterCriticalSection(&moduleLock);
  if (settingChangeWindow != nullptr) {
    DestroyWindow(settingChangeWindow);
    settingChangeWindow = nullptr;
  }
  LeaveCriticalSection(&moduleLock);
  messageLoopMap.reset();
  DeleteCriticalSection(&moduleLock);
}

}  // namespace ostrell
