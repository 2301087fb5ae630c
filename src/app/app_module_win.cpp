#include "app/app_module_win.h"

#include <new>

namespace ostrell {

HRESULT COstrellAppModule::Initialise() {
  InitializeCriticalSectionAndSpinCount(&moduleLock, 0);
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
