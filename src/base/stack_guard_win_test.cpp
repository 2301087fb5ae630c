#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>

// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" uintptr_t __stack_chk_guard;

namespace {

// Turns over what lies behind its own text, the guard with it.
__attribute__((noinline)) void Overrun(size_t bytes) {
  char text[64] = {};
  volatile char* const behind = text;
  for (size_t i = 0; i < sizeof text + bytes; ++i) {
    behind[i] = static_cast<char>(~behind[i]);
  }
}

// Of int 0x29, which asks the system to end the process at once.
bool IsFastFail(int exitCode) {
  return static_cast<DWORD>(exitCode) == STATUS_STACK_BUFFER_OVERRUN;
}

TEST(StackGuard, EndsTheProcessBeforeAnOverrunFunctionReturns) {
  EXPECT_EXIT(Overrun(16), IsFastFail, "");
  Overrun(0);
}

TEST(StackGuard, IsChosenByChanceBehindAZero) {
  EXPECT_EQ(__stack_chk_guard & 0xFF, 0u);
  EXPECT_NE(__stack_chk_guard >> 8, 0u);
}

}  // namespace
