#include "devkit/report_server/packed_body.h"

#include <gtest/gtest.h>
#include <zlib.h>

namespace ostrell {
namespace {

using namespace std::string_literals;

std::string Packed(const std::string& text) {
  std::string packed(compressBound(text.size()), '\0');
  uLongf size = packed.size();
  EXPECT_EQ(compress(reinterpret_cast<Bytef*>(packed.data()), &size,
                     reinterpret_cast<const Bytef*>(text.data()), text.size()),
            Z_OK);
  packed.resize(size);
  return packed;
}

PackedBodyCheck CheckJson(std::string_view body) {
  return CheckPackedBody(body, {.digest = "", .isJson = true});
}

TEST(PackedBodyTest, DigestIsThatOfThePackedBytesInUpperCase) {
  // The empty text as a zlib stream, and its MD5 by md5sum.
  const std::string body = "\x78\x9C\x03\x00\x00\x00\x00\x01"s;
  const auto matches = [](const std::string& packed, const char* digest) {
    return CheckPackedBody(packed, {.digest = digest, .isJson = false}).digestMatches;
  };
  EXPECT_TRUE(matches(body, "FB0FC3AB8C050179A378DCB10368ACF6"));
  EXPECT_FALSE(matches(body, "fb0fc3ab8c050179a378dcb10368acf6"));
  EXPECT_FALSE(matches(body + "x", "FB0FC3AB8C050179A378DCB10368ACF6"));
  EXPECT_FALSE(matches(body, ""));
}

TEST(PackedBodyTest, ArrayHasItsLengthAndOtherDocumentsHaveNone) {
  EXPECT_EQ(CheckJson(Packed("[1,{},\"x\"]")).items, 3U);
  EXPECT_EQ(CheckJson(Packed("{}")).isJson, true);
  EXPECT_EQ(CheckJson(Packed("{}")).items, std::nullopt);
  EXPECT_EQ(CheckJson(Packed("[1,")).isJson, false);
}

TEST(PackedBodyTest, AnythingButOneWholeStreamIsDamaged) {
  const std::string text = "[" + std::string(300000, ' ') + "]";
  const std::string whole = Packed(text);
  ASSERT_TRUE(CheckJson(whole).isZlib);
  ASSERT_EQ(CheckJson(whole).unpacked, text);

  std::string wrongChecksum = whole;
  wrongChecksum.back() ^= 1;
  for (const std::string& damaged :
       {whole.substr(0, whole.size() - 1), whole + "x", wrongChecksum, whole.substr(2), ""s}) {
    EXPECT_FALSE(CheckJson(damaged).isZlib) << damaged.size();
  }
  EXPECT_EQ(CheckJson(whole.substr(0, whole.size() - 1)).unpacked, text);
}

}  // namespace
}  // namespace ostrell
