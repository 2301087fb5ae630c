#include "platform/crashsentry.h"

#include <cstdint>

#include "platform/closed_library.h"

namespace ostrell {

void InstallCrashHandler() {
  const ClosedLibrary library(L"crashsentry.dll");
  if (const auto install = library.ByName<int32_t (*)(int32_t)>("InstallCrashSentry")) {
    install(0);
  }
}

}  // namespace ostrell
