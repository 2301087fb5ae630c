#include <windows.h>

#include <objbase.h>

#include "app/app_module_win.h"
#include "app/exception_memory.h"
#include "app/process_hardening_win.h"
#include "app/report_driver.h"
#include "app/run_limit.h"
#include "app/start_up.h"
#include "env/client_identity.h"
#include "platform/closed_library.h"

namespace ostrell {
namespace {

COstrellAppModule appModule;

void StartUp() {
  ReserveExceptionMemory();
  HardenProcess();
  LimitRun(kRunLimit);
  InstallCrashHandler();
  EnterProgramFolder();
  if (!BecomeOnlyInstance() || FAILED(CoInitialize(nullptr))) {
    return;  // nothing is undone: the process ends at once
  }
  SeedJson();
  PrepareLocaleAndControls();
  const HRESULT initialised = appModule.Initialise();
  ComputeIdentity(MachineIdentity(), ClientId());
  if (SUCCEEDED(initialised)) {
    RunReportDriver();
    appModule.Terminate();
  }
  CoUninitialize();
}

}  // namespace
}  // namespace ostrell

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  try {
    ostrell::StartUp();
  } catch (...) {  // out of memory: the exit code says 0 whatever happened
  }
  return 0;
}
