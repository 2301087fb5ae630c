#include <windows.h>

#include "app/run_limit.h"
#include "base/handle_win.h"

namespace ostrell {
namespace {

DWORD WINAPI EndProcessAfter(void* milliseconds) {
  Sleep(static_cast<DWORD>(reinterpret_cast<uintptr_t>(milliseconds)));
  // Not ExitProcess: it waits for locks that the thread which hangs may hold.
  TerminateProcess(GetCurrentProcess(), 0);
  return 0;
}

}  // namespace

void LimitRun(std::chrono::milliseconds limit) {
  constexpr SIZE_T kStackBytes = 65536;
  // The argument holds the number itself.
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  void* const argument = reinterpret_cast<void*>(static_cast<uintptr_t>(limit.count()));
  // Where no thread can be made the run goes without its limit.
  const KernelHandle thread(CreateThread(nullptr, kStackBytes, EndProcessAfter, argument,
                                         STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
}

}  // namespace ostrell
