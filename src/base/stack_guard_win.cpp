// The stack protector's runtime (GCC: __stack_chk_guard, __stack_chk_fail), in place of the
// compiler's own, which opens a crypto provider in every image that starts.
#include <windows.h>

#include <ntsecapi.h>

#include <cstdint>

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {

// What a protected function keeps above its locals and finds again when it returns.
uintptr_t __stack_chk_guard;

// The process ends at once, past every handler (FAST_FAIL_STACK_COOKIE_CHECK_FAILURE).
[[noreturn]] void __stack_chk_fail() {
  __asm__ volatile("int $0x29" ::"c"(2));
  __builtin_unreachable();
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

namespace {

// Runs before any other initialiser of the image. The lowest byte is a zero, which text that runs
// over cannot write. Without random numbers the image's place and the clock make the guard.
__attribute__((constructor(101), optimize("no-stack-protector"))) void ChooseGuard() {
  if (RtlGenRandom(&__stack_chk_guard, sizeof(__stack_chk_guard)) == FALSE) {
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    __stack_chk_guard = (reinterpret_cast<uintptr_t>(&__stack_chk_guard) << 16) ^
                        static_cast<uintptr_t>(now.QuadPart);
  }
  __stack_chk_guard &= ~uintptr_t{0xFF};
}

}  // namespace
