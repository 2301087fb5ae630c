#include "base/murmur.h"

#include "base/bytes.h"

namespace ostrell {
namespace {

constexpr uint32_t kMultiplier = 0x5bd1e995;
constexpr int kShift = 24;

void MixIn(uint32_t& half, uint32_t word) {
  word *= kMultiplier;
  word ^= word >> kShift;
  word *= kMultiplier;
  half = half * kMultiplier ^ word;
}

void Fold(uint32_t& half, uint32_t other, int shift) {
  half ^= other >> shift;
  half *= kMultiplier;
}

}  // namespace

uint64_t MurmurHash64B(std::span<const std::byte> bytes, uint64_t seed) {
  uint32_t first = static_cast<uint32_t>(seed) ^ static_cast<uint32_t>(bytes.size());
  uint32_t second = static_cast<uint32_t>(seed >> 32);

  size_t at = 0;
  for (; bytes.size() - at >= 8; at += 8) {
    MixIn(first, *ReadLittleEndian<uint32_t>(bytes, at));
    MixIn(second, *ReadLittleEndian<uint32_t>(bytes, at + 4));
  }
  if (bytes.size() - at >= 4) {
    MixIn(first, *ReadLittleEndian<uint32_t>(bytes, at));
    at += 4;
  }
  if (at < bytes.size()) {
    uint32_t tail = 0;
    for (size_t i = bytes.size(); i > at; --i) {
      tail = (tail << 8) | std::to_integer<uint32_t>(bytes[i - 1]);
    }
    second = (second ^ tail) * kMultiplier;
  }

  Fold(first, second, 18);
  Fold(second, first, 22);
  Fold(first, second, 17);
  Fold(second, first, 19);
  return (uint64_t{first} << 32) | second;
}

}  // namespace ostrell
