#include "base/sha1.h"

#include <bit>

namespace ostrell {
namespace {

uint32_t BigEndianWord(DigestBlocks::Block block, size_t index) {
  uint32_t word = 0;
  for (size_t i = 0; i < 4; ++i) {
    word = (word << 8) | std::to_integer<uint32_t>(block[4 * index + i]);
  }
  return word;
}

// FIPS 180-4, 4.1.1 and 4.2.1: the function of a step with its constant added.
uint32_t Mix(size_t step, uint32_t b, uint32_t c, uint32_t d) {
  switch (step / 20) {
    case 0:
      return (d ^ (b & (c ^ d))) + 0x5a827999;
    case 1:
      return (b ^ c ^ d) + 0x6ed9eba1;
    case 2:
      return ((b & c) | (d & (b | c))) + 0x8f1bbcdc;
    default:
      return (b ^ c ^ d) + 0xca62c1d6;
  }
}

}  // namespace

void Sha1::Compress(DigestBlocks::Block block) {
  std::array<uint32_t, 80> words;
  for (size_t i = 0; i < words.size(); ++i) {
    words[i] = i < 16 ? BigEndianWord(block, i)
                      : std::rotl(words[i - 3] ^ words[i - 8] ^ words[i - 14] ^ words[i - 16], 1);
  }
  auto [a, b, c, d, e] = state;
  for (size_t i = 0; i < words.size(); ++i) {
    const uint32_t sum = std::rotl(a, 5) + Mix(i, b, c, d) + e + words[i];
    e = d;
    d = c;
    c = std::rotl(b, 30);
    b = a;
    a = sum;
  }
  state[0] += a;
  state[1] += b;
  state[2] += c;
  state[3] += d;
  state[4] += e;
}

void Sha1::Update(std::span<const std::byte> bytes) {
  blocks.Update(bytes, [this](DigestBlocks::Block block) { Compress(block); });
}

Sha1::Digest Sha1::Finish() {
  blocks.Finish(std::endian::big, [this](DigestBlocks::Block block) { Compress(block); });
  Digest digest;
  for (size_t i = 0; i < digest.size(); ++i) {
    digest[i] = static_cast<std::byte>(state[i / 4] >> (24 - 8 * (i % 4)));
  }
  return digest;
}

Sha1::Digest Sha1::Of(std::span<const std::byte> bytes) {
  Sha1 sha1;
  sha1.Update(bytes);
  return sha1.Finish();
}

}  // namespace ostrell
