#include "base/md5.h"

#include <bit>
#include <cstring>

#include "base/bytes.h"

namespace ostrell {
namespace {

// RFC 1321, 3.4: the integer part of 4294967296 * abs(sin(i + 1)).
constexpr std::array<uint32_t, 64> kSines = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};

constexpr std::array<std::array<int, 4>, 4> kShifts = {
    {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}}};

// The word of the block that a step of a round takes.
constexpr size_t WordOf(size_t round, size_t step) {
  constexpr std::array<size_t, 4> kFactor = {1, 5, 3, 7};
  constexpr std::array<size_t, 4> kStart = {0, 1, 5, 0};
  return (kFactor[round] * step + kStart[round]) % 16;
}

uint32_t Mix(size_t round, uint32_t b, uint32_t c, uint32_t d) {
  switch (round) {
    case 0:
      return d ^ (b & (c ^ d));
    case 1:
      return c ^ (d & (b ^ c));
    case 2:
      return b ^ c ^ d;
    default:
      return c ^ (b | ~d);
  }
}

}  // namespace

void Md5::Compress(DigestBlocks::Block block) {
  std::array<uint32_t, 16> words;
  for (size_t i = 0; i < words.size(); ++i) {
    words[i] = *ReadLittleEndian<uint32_t>(block, 4 * i);
  }
  auto [a, b, c, d] = state;
  for (size_t i = 0; i < kSines.size(); ++i) {
    const size_t round = i / 16;
    const uint32_t sum = a + Mix(round, b, c, d) + kSines[i] + words[WordOf(round, i)];
    a = d;
    d = c;
    c = b;
    b += std::rotl(sum, kShifts[round][i % 4]);
  }
  state[0] += a;
  state[1] += b;
  state[2] += c;
  state[3] += d;
}

void Md5::Update(std::span<const std::byte> bytes) {
  blocks.Update(bytes, [this](DigestBlocks::Block block) { Compress(block); });
}

Md5::Digest Md5::Finish() {
  blocks.Finish(std::endian::little, [this](DigestBlocks::Block block) { Compress(block); });
  Digest digest;
  for (size_t i = 0; i < digest.size(); ++i) {
    digest[i] = static_cast<std::byte>(state[i / 4] >> (8 * (i % 4)));
  }
  return digest;
}

Md5::Digest Md5::Of(std::span<const std::byte> bytes) {
  Md5 md5;
  md5.Update(bytes);
  return md5.Finish();
}

}  // namespace ostrell
