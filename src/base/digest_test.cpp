#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>
#include <vector>

#include "base/byte_buffer.h"
#include "base/bytes.h"
#include "base/hex.h"
#include "base/md5.h"
#include "base/murmur.h"
#include "base/sha1.h"
#include "tests/support/expect_recorded.h"

namespace ostrell {
namespace {

constexpr uint64_t kHuge = std::numeric_limits<uint64_t>::max();

TEST(Bytes, SliceOfWhatLiesInside) {
  const auto slice = [](uint64_t offset, uint64_t length) {
    const auto found = Slice(BytesOf("abcdef"), offset, length);
    return found ? TextOf(*found) : "nothing";
  };
  EXPECT_EQ(slice(0, 6), "abcdef");
  EXPECT_EQ(slice(2, 3), "cde");
  EXPECT_EQ(slice(6, 0), "");
  for (const auto& [offset, length] : std::initializer_list<std::pair<uint64_t, uint64_t>>{
           {0, 7}, {6, 1}, {7, 0}, {1, kHuge}, {kHuge, 1}, {kHuge, kHuge}}) {
    EXPECT_EQ(slice(offset, length), "nothing") << offset << ' ' << length;
  }
}

TEST(Bytes, LittleEndianOfEachWidthAndAtTheEnds) {
  const auto bytes = BytesOf("\x01\x02\x03\x04\x05\x06\x07\xF8\x09");
  EXPECT_EQ(ReadLittleEndian<uint8_t>(bytes, 7), 0xF8);
  EXPECT_EQ(ReadLittleEndian<uint16_t>(bytes, 7), 0x09F8);
  EXPECT_EQ(ReadLittleEndian<uint32_t>(bytes, 1), 0x05040302u);
  EXPECT_EQ(ReadLittleEndian<uint64_t>(bytes, 0), 0xF807060504030201u);
  EXPECT_EQ(ReadLittleEndian<uint64_t>(bytes, 2), std::nullopt);
  EXPECT_EQ(ReadLittleEndian<uint32_t>(bytes, kHuge - 1), std::nullopt);
}

TEST(Bytes, WithoutMemoryThereAreNone) {
  EXPECT_EQ(AllocateBytes(5000), ByteBuffer(5000));
  EXPECT_EQ(AllocateBytes(kHuge), std::nullopt);
}

// Fed in pieces, or at once.
template <class Digest>
std::string HexOf(std::span<const std::byte> bytes, size_t piece = SIZE_MAX) {
  Digest digest;
  for (size_t at = 0; at < bytes.size(); at += std::min(piece, bytes.size())) {
    digest.Update(bytes.subspan(at, std::min(piece, bytes.size() - at)));
  }
  return UpperHex(digest.Finish());
}

TEST(Digests, RecordedCases) {
  ExpectRecorded("digests", [](const std::string& input, const RecordedCase& recorded) {
    return recorded.Name() == "md5" ? HexOf<Md5>(BytesOf(input)) : HexOf<Sha1>(BytesOf(input));
  });
  // RFC 3174, 7.3.
  EXPECT_EQ(UpperHex(Sha1::Of(BytesOf(std::string(1000000, 'a')))),
            "34AA973CD4C4DAA4F61EEB2BDBAD27316534016F");
}

// Of all beginnings of 260 bytes without a short period, fed in pieces of many sizes, the digests'
// own digest; computed by Python's hashlib.
template <class Digest>
std::string OfEveryLength() {
  std::vector<std::byte> bytes(260);
  for (uint32_t state = 1; std::byte & byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<std::byte>(state >> 24);
  }
  std::string digests;
  for (size_t length = 0; length <= bytes.size(); ++length) {
    digests += HexOf<Digest>(std::span(bytes).first(length), length % 130 + 1);
  }
  return HexOf<Digest>(BytesOf(digests));
}

TEST(Digests, EveryLengthAcrossFourBlocksInPieces) {
  EXPECT_EQ(OfEveryLength<Md5>(), "D200668378E4C6E23724EDEFCF7AA531");
  EXPECT_EQ(OfEveryLength<Sha1>(), "2826E2F96881A3A13994F56698A0C4B42093941E");
}

// The verification value that the SMHasher test suite publishes for this function: the hashes of
// the keys {}, {0}, {0, 1}, ... with the seeds 256, 255, ... are hashed once more.
TEST(MurmurHash64B, VerificationValueOfSmHasher) {
  std::vector<std::byte> key;
  std::vector<std::byte> hashes;
  for (uint64_t i = 0; i < 256; ++i) {
    const uint64_t hash = MurmurHash64B(key, 256 - i);
    for (int shift = 0; shift < 64; shift += 8) {
      hashes.push_back(static_cast<std::byte>(hash >> shift));
    }
    key.push_back(static_cast<std::byte>(i));
  }
  EXPECT_EQ(static_cast<uint32_t>(MurmurHash64B(hashes, 0)), 0xDD537C05u);
  // Seeds past 32 bits reach the second half.
  EXPECT_NE(MurmurHash64B(key, 0x19870714), MurmurHash64B(key, 0x119870714));
}

TEST(Hex, EveryByteBothWays) {
  for (int value = 0; value < 256; ++value) {
    const std::string text = UpperHex(std::array{static_cast<std::byte>(value)});
    EXPECT_EQ(std::stoi(text, nullptr, 16), value);
    EXPECT_EQ(HexDigitValue(text[0]) * 16 + HexDigitValue(text[1]), value);
  }
  EXPECT_EQ(UpperHex(BytesOf("\x09\xAF")), "09AF");
  EXPECT_EQ(HexDigitValue('f'), 15);
  for (const char other : {'/', ':', '@', 'G', '`', 'g', ' ', '\0'}) {
    EXPECT_EQ(HexDigitValue(other), -1) << other;
  }
}

}  // namespace
}  // namespace ostrell
