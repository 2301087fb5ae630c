#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace ostrell {

// MurmurHash64B, the 64-bit MurmurHash2 for 32-bit machines (Austin Appleby, public domain). The
// first half stands in the high 32 bits of the result. Input below 4 GiB, as the algorithm mixes a
// 32-bit length in.
uint64_t MurmurHash64B(std::span<const std::byte> bytes, uint64_t seed);

}  // namespace ostrell
