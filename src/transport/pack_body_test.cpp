#include "transport/pack_body.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "base/hex.h"
#include "tests/support/test_bodies.h"

namespace ostrell {
namespace {

std::string ReadAll(ByteChain& chain) {
  std::string text(static_cast<size_t>(chain.Total()), '\0');
  text.resize(chain.Read(std::as_writable_bytes(std::span(text.data(), text.size()))));
  EXPECT_EQ(chain.Total(), 0u) << "the packed body lies in one chunk";
  return text;
}

std::string Unpack(const std::string& packed, size_t length) {
  std::string text(length + 1, '\0');
  auto unpackedLength = static_cast<uLongf>(text.size());
  EXPECT_EQ(
      uncompress(reinterpret_cast<Bytef*>(text.data()), &unpackedLength,
                 reinterpret_cast<const Bytef*>(packed.data()), static_cast<uLong>(packed.size())),
      Z_OK);
  text.resize(unpackedLength);
  return text;
}

// Packed lengths and digests come from Python's zlib.compress and hashlib.md5.
TEST(PackBody, GivesTheBytesOfAnotherProgram) {
  const struct {
    const char* name;
    std::string body;
    size_t packedLength;
    const char* digest;
  } kCases[] = {
      {"empty", "", 8, "FB0FC3AB8C050179A378DCB10368ACF6"},
      {"short", R"([{"report_type":"dump"}])", 32, "4B9FA9022CD2656B05872107E2BECFFF"},
      {"compressible", SquaresBody(20000), 137183, "4DB6610F9125BF6E3C5833C1FFEC497A"},
      {"incompressible", RandomBody(1 << 20), 1048902, "066CB0B14CBF5C16ECE2190604B59D21"},
  };
  for (const auto& testCase : kCases) {
    SCOPED_TRACE(testCase.name);
    ByteChain chain;
    std::string digest;
    const auto length = static_cast<uint32_t>(testCase.body.size());
    ASSERT_EQ(PackBody(chain, &digest, testCase.body.data(), length), 1);
    const std::string packed = ReadAll(chain);
    EXPECT_EQ(packed.size(), testCase.packedLength);
    EXPECT_EQ(digest, testCase.digest);
    EXPECT_EQ(Unpack(packed, length), testCase.body);
  }
}

TEST(PackBody, AppendsBehindWhatTheChainHolds) {
  ByteChain chain;
  ASSERT_TRUE(chain.Append(BytesOf("first")));
  ASSERT_EQ(PackBody(chain, nullptr, nullptr, 0), 1);
  std::byte first[5];
  ASSERT_EQ(chain.Read(first), 5u);
  EXPECT_EQ(UpperHex(BytesOf(ReadAll(chain))), "789C030000000001");
}

TEST(PackBody, LeavesAChainThatTakesNoMoreUnchanged) {
  ByteChain chain(7);
  std::string digest = "as it was";
  EXPECT_EQ(PackBody(chain, &digest, "", 0), 0);
  EXPECT_EQ(chain.Total(), 0u);
  EXPECT_EQ(digest, "as it was");
}

// By hand: n + n/2^12 + n/2^14 + n/2^25 + 1036, modulo 2^32, the low ten bits cleared.
TEST(PackBody, RoomIsTheBoundInWholeKibibytesModulo32Bits) {
  EXPECT_EQ(PackingRoom(0), 1024u);
  EXPECT_EQ(PackingRoom(1011), 1024u);
  EXPECT_EQ(PackingRoom(1012), 2048u);
  EXPECT_EQ(PackingRoom(16384 + 1006), 17408u);
  EXPECT_EQ(PackingRoom(16384 + 1007), 18432u);
  EXPECT_EQ(PackingRoom((1 << 25) + 1010), 33565696u);
  EXPECT_EQ(PackingRoom((1 << 25) + 1011), 33566720u);
  EXPECT_EQ(PackingRoom(0xFFFF'FFFF), 1311744u);
  for (const uint32_t length : {0u, 1u, 1011u, 1012u, 16383u, 16384u, 1u << 25, 0xFFEB'0000u}) {
    EXPECT_GE(PackingRoom(length), compressBound(length)) << length;
    EXPECT_LT(PackingRoom(length) - compressBound(length), 1024u) << length;
  }
}

}  // namespace
}  // namespace ostrell
