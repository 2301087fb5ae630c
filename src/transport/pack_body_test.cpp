#include "transport/pack_body.h"

#include <string>

#include "base/bytes.h"
#include "base/hex.h"
#include "base/md5.h"
#include "tests/support/expect_recorded.h"
#include "tests/support/test_bodies.h"

namespace ostrell {
namespace {

std::string ReadAll(ByteChain& chain) {
  std::string text(static_cast<size_t>(chain.Total()), '\0');
  text.resize(chain.Read(std::as_writable_bytes(std::span(text))));
  EXPECT_EQ(chain.Total(), 0u) << "the packed body lies in one chunk";
  return text;
}

// Packed lengths and digests come from Python's zlib.compress and hashlib.md5.
TEST(PackBody, GivesTheBytesOfAnotherProgram) {
  const struct {
    std::string body;
    size_t packedLength;
    const char* digest;
  } kCases[] = {{"", 8, "FB0FC3AB8C050179A378DCB10368ACF6"},
                {R"([{"report_type":"dump"}])", 32, "4B9FA9022CD2656B05872107E2BECFFF"},
                {SquaresBody(20000), 137183, "4DB6610F9125BF6E3C5833C1FFEC497A"},
                {RandomBody(1 << 20), 1048902, "066CB0B14CBF5C16ECE2190604B59D21"}};
  for (const auto& [body, packedLength, expected] : kCases) {
    SCOPED_TRACE(packedLength);
    ByteChain chain;
    std::string digest;
    ASSERT_EQ(PackBody(chain, &digest, body.data(), static_cast<uint32_t>(body.size())), 1);
    EXPECT_EQ(digest, expected);
    const std::string packed = ReadAll(chain);
    EXPECT_EQ(packed.size(), packedLength);
    EXPECT_EQ(UpperHex(Md5::Of(BytesOf(packed))), expected);
  }
}

TEST(PackBody, AppendsBehindWhatTheChainHoldsOrLeavesIt) {
  ByteChain chain(13);
  ASSERT_TRUE(chain.Append(BytesOf("first")));
  ASSERT_EQ(PackBody(chain, nullptr, nullptr, 0), 1);
  std::string digest = "as it was";
  EXPECT_EQ(PackBody(chain, &digest, "", 0), 0);
  EXPECT_EQ(digest, "as it was");
  std::byte first[5];
  ASSERT_EQ(chain.Read(first), 5u);
  EXPECT_EQ(UpperHex(BytesOf(ReadAll(chain))), "789C030000000001");
}

TEST(PackBody, RoomIsTheBoundInWholeKibibytesModulo32Bits) {
  ExpectRecorded("packing_room", [](const std::string& length, const auto&) {
    return std::to_string(PackingRoom(static_cast<uint32_t>(std::stoul(length))));
  });
}

}  // namespace
}  // namespace ostrell
