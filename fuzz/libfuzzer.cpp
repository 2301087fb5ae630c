#include <cstddef>
#include <cstdint>

#include "fuzz/fuzz_target.h"

// What libFuzzer calls.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ostrell::CheckInput({reinterpret_cast<const char*>(data), size});
  return 0;
}
