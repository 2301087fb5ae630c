#pragma once

#include <cstdint>

namespace ostrell {

// a - b in two's complement, wrapping. Times come from a store that anyone may have written to.
constexpr int64_t WrappingDifference(int64_t a, int64_t b) {
  return static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
}

}  // namespace ostrell
