#include <windows.h>

#include <gtest/gtest.h>

#include "app/start_up.h"

namespace ostrell {
namespace {

// Another copy in this session alone would be found under the name that no session shares.
TEST(BecomeOnlyInstance, LooksAtAllSessions) {
  const HANDLE ofSession = CreateMutexA(nullptr, FALSE, "Local\\Velmora::qx_ostrell");
  EXPECT_TRUE(BecomeOnlyInstance());
  CloseHandle(ofSession);
  const HANDLE ofAll = OpenMutexA(SYNCHRONIZE, FALSE, "Global\\Velmora::qx_ostrell");
  EXPECT_NE(ofAll, nullptr);
  CloseHandle(ofAll);
  EXPECT_FALSE(BecomeOnlyInstance());
}

}  // namespace
}  // namespace ostrell
