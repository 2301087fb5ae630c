#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// What each target defines: drives its reader with foreign bytes and ends the program when a
// property does not hold. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace ostrell {

inline void Require(bool property) {
  if (!property) {
    std::abort();
  }
}

}  // namespace ostrell
