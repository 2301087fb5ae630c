#pragma once

#include <windows.h>

#include <memory>
#include <vector>

namespace ostrell {

// The application module in the shape of the template library's: it has no windows, message loops
// or COM classes of its own.
class COstrellAppModule {
 public:
  // Creates the lock and the empty message-loop map and notes the calling thread as the main one.
  // S_OK, or E_OUTOFMEMORY when either cannot be made.
  HRESULT Initialise();

  // Undoes a successful Initialise().
  void Terminate();

 private:
  struct MessageLoopMap {
    std::vector<DWORD> threadIds;
    std::vector<void*> messageLoops;
  };

  CRITICAL_SECTION moduleLock{};
  DWORD mainThreadId = 0;
  std::unique_ptr<MessageLoopMap> messageLoopMap;
  HWND settingChangeWindow = nullptr;
};

}  // namespace ostrell
