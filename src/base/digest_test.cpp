#include <gtest/gtest.h>
#include <zlib.h>

#include <array>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/hex.h"
#include "base/md5.h"
#include "base/murmur.h"
#include "base/sha1.h"

#ifndef _WIN32
#include <openssl/evp.h>
#endif

namespace ostrell {
namespace {

struct Vector {
  std::string input;
  const char* digest;
};

const std::string kEightyDigits =
    "12345678901234567890123456789012345678901234567890123456789012345678901234567890";

// RFC 1321, appendix A.5.
const std::vector<Vector> kMd5Vectors = {
    {"", "D41D8CD98F00B204E9800998ECF8427E"},
    {"a", "0CC175B9C0F1B6A831C399E269772661"},
    {"abc", "900150983CD24FB0D6963F7D28E17F72"},
    {"message digest", "F96B697D7CB7938D525A2F31AAF161D0"},
    {"abcdefghijklmnopqrstuvwxyz", "C3FCD3D76192E4007DFB496CCA67E13B"},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
     "D174AB98D277D9F5A5611C2C9F419D9F"},
    {kEightyDigits, "57EDF4A22BE3C955AC49DA2E2107B67A"}};

// FIPS 180 examples, and RFC 3174, 7.3.
const std::vector<Vector> kSha1Vectors = {
    {"", "DA39A3EE5E6B4B0D3255BFEF95601890AFD80709"},
    {"abc", "A9993E364706816ABA3E25717850C26C9CD0D89D"},
    {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
     "84983E441C3BD26EBAAE4AA1F95129E5E54670F1"},
    {std::string(1000000, 'a'), "34AA973CD4C4DAA4F61EEB2BDBAD27316534016F"}};

TEST(Md5, PublishedVectors) {
  for (const auto& [input, digest] : kMd5Vectors) {
    EXPECT_EQ(UpperHex(Md5::Of(BytesOf(input))), digest) << input;
  }
}

TEST(Sha1, PublishedVectors) {
  for (const auto& [input, digest] : kSha1Vectors) {
    EXPECT_EQ(UpperHex(Sha1::Of(BytesOf(input))), digest) << input.substr(0, 60);
  }
}

// Bytes without a short period.
std::vector<std::byte> Pattern(size_t size) {
  std::vector<std::byte> bytes(size);
  uint32_t state = 1;
  for (std::byte& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<std::byte>(state >> 24);
  }
  return bytes;
}

template <class Digest>
std::string InPieces(std::span<const std::byte> bytes, size_t piece) {
  Digest digest;
  for (size_t at = 0; at < bytes.size(); at += piece) {
    digest.Update(bytes.subspan(at, std::min(piece, bytes.size() - at)));
  }
  return UpperHex(digest.Finish());
}

TEST(Digests, PiecesOfAnySizeGiveTheSame) {
  const auto bytes = Pattern(1000);
  for (const size_t piece : {1, 3, 55, 56, 63, 64, 65, 127, 128, 129, 999}) {
    EXPECT_EQ(InPieces<Md5>(bytes, piece), UpperHex(Md5::Of(bytes))) << piece;
    EXPECT_EQ(InPieces<Sha1>(bytes, piece), UpperHex(Sha1::Of(bytes))) << piece;
  }
}

#ifndef _WIN32
std::string OpenSslDigest(std::span<const std::byte> bytes, const EVP_MD* kind) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned length = 0;
  EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, kind, nullptr);
  return UpperHex(std::as_bytes(std::span(digest).first(length)));
}

TEST(Digests, EveryLengthAcrossFourBlocksAgreesWithOpenSsl) {
  const auto bytes = Pattern(260);
  for (size_t length = 0; length <= bytes.size(); ++length) {
    const auto head = std::span(bytes).first(length);
    EXPECT_EQ(UpperHex(Md5::Of(head)), OpenSslDigest(head, EVP_md5())) << length;
    EXPECT_EQ(UpperHex(Sha1::Of(head)), OpenSslDigest(head, EVP_sha1())) << length;
  }
}
#endif

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
}

TEST(MurmurHash64B, SeedsPastThirtyTwoBitsReachTheSecondHalf) {
  EXPECT_NE(MurmurHash64B(BytesOf("path"), 0x19870714),
            MurmurHash64B(BytesOf("path"), 0x119870714));
}

// zlib's CRC-32 is the one of ISO-HDLC; its check value is published in the CRC catalogue.
TEST(Crc32, CheckValueAndChaining) {
  const auto bytes = reinterpret_cast<const Bytef*>("123456789");
  EXPECT_EQ(crc32(0, bytes, 9), 0xCBF43926u);
  EXPECT_EQ(crc32(crc32(0, bytes, 4), bytes + 4, 5), 0xCBF43926u);
}

TEST(Hex, EveryByteBothWays) {
  for (int value = 0; value < 256; ++value) {
    const std::array bytes{static_cast<std::byte>(value)};
    const std::string text = UpperHex(bytes);
    ASSERT_EQ(text.size(), 2u);
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
