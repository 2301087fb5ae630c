#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/hex.h"
#include "base/md5.h"
#include "base/murmur.h"
#include "base/sha1.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

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
  for (const RecordedCase& recorded : CasesOf("digests")) {
    const auto md5 = recorded.All("md5");
    const auto sha1 = recorded.All("sha1");
    for (size_t i = 0; const std::string& input : recorded.All("input")) {
      EXPECT_EQ(md5.empty() ? sha1.at(i) : md5.at(i),
                md5.empty() ? HexOf<Sha1>(BytesOf(input)) : HexOf<Md5>(BytesOf(input)));
      ++i;
    }
  }
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
