#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace ostrell {

// What MD5 and SHA-1 share: 64-byte blocks, a count of the bytes, and the closing padding of one
// bit, zeros and the length in bits. `compress` is called for each whole block.
class DigestBlocks {
 public:
  static constexpr size_t kBlockSize = 64;
  using Block = std::span<const std::byte, kBlockSize>;

  template <class Compress>
  void Update(std::span<const std::byte> bytes, Compress compress) {
    size_t used = static_cast<size_t>(length % kBlockSize);
    length += bytes.size();
    if (used > 0) {
      const size_t taken = std::min(kBlockSize - used, bytes.size());
      std::copy_n(bytes.begin(), taken, pending.begin() + static_cast<ptrdiff_t>(used));
      bytes = bytes.subspan(taken);
      used += taken;
      if (used < kBlockSize) {
        return;
      }
      compress(Block(pending));
    }
    for (; bytes.size() >= kBlockSize; bytes = bytes.subspan(kBlockSize)) {
      compress(bytes.first<kBlockSize>());
    }
    std::copy(bytes.begin(), bytes.end(), pending.begin());
  }

  // Pads and compresses what is left. `lengthOrder` is the byte order of the length field.
  template <class Compress>
  void Finish(std::endian lengthOrder, Compress compress) {
    const uint64_t bits = length * 8;
    std::array<std::byte, kBlockSize + 8> padding{std::byte{0x80}};
    const size_t used = static_cast<size_t>(length % kBlockSize);
    const size_t zerosEnd = (used < 56 ? 56 : 56 + kBlockSize) - used;
    for (size_t i = 0; i < 8; ++i) {
      const size_t shift = 8 * (lengthOrder == std::endian::little ? i : 7 - i);
      padding[zerosEnd + i] = static_cast<std::byte>(bits >> shift);
    }
    Update(std::span(padding).first(zerosEnd + 8), compress);
  }

 private:
  std::array<std::byte, kBlockSize> pending{};
  uint64_t length = 0;
};

}  // namespace ostrell
