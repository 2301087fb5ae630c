#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "base/digest_blocks.h"

namespace ostrell {

// SHA-1, FIPS 180-4. Inputs of any length, fed in pieces of any size.
class Sha1 {
 public:
  using Digest = std::array<std::byte, 20>;

  void Update(std::span<const std::byte> bytes);
  // Ends the computation; the object is not used afterwards.
  Digest Finish();

  static Digest Of(std::span<const std::byte> bytes);

 private:
  void Compress(DigestBlocks::Block block);

  std::array<uint32_t, 5> state{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
  DigestBlocks blocks;
};

}  // namespace ostrell
