#include "base/fold_case.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <array>
#include <cstdint>

namespace ostrell {
namespace {

TEST(FoldCase, LettersOfManyScripts) {
  const struct {
    char32_t from;
    char32_t to;
  } cases[] = {
      {U'A', U'a'},
      {U'[', U'['},
      {U'\u00C4', U'\u00E4'},  // A with two dots
      {U'\u00D7', U'\u00D7'},  // the multiplication sign stands between the letters
      {U'\u0130', U'\u0130'},  // I with a dot
      {U'\u0131', U'\u0131'},  // i without one
      {U'\u0178', U'\u00FF'},  // Y with two dots lies apart from its small letter
      {U'\u1E9E', U'\u00DF'},  // sharp s
      {U'\u01C5', U'\u01C6'},  // title case
      {U'\u03A3', U'\u03C3'},  // sigma
      {U'\u03C2', U'\u03C3'},  // and the one at the end of words
      {U'\u0416', U'\u0436'},  // Cyrillic
      {U'\u10A0', U'\u2D00'},  // Georgian
      {U'\u13A0', U'\u13A0'},  // Cherokee folds to its capitals
      {U'\uAB70', U'\u13A0'},
      {U'\u212A', U'k'},               // the Kelvin sign
      {U'\u3042', U'\u3042'},          // no case
      {U'\U00010400', U'\U00010428'},  // Deseret
      {U'\U0001E921', U'\U0001E943'},  // Adlam, the last one
      {U'\U0001E922', U'\U0001E922'},
  };
  for (const auto& [from, to] : cases) {
    EXPECT_EQ(FoldCase(from), to) << std::hex << uint32_t{from};
    EXPECT_EQ(FoldCase(to), to) << std::hex << uint32_t{to};
  }
  EXPECT_EQ(FoldCase(0x110000), char32_t{0x110000});
  EXPECT_EQ(FoldCase(0xFFFFFFFF), char32_t{0xFFFFFFFF});
}

// Number and CRC-32 of the pairs of Unicode's file, in order, eight bytes each, little-endian; both
// were computed by another program from the file itself.
TEST(FoldCase, IsTheWholeTable) {
  uint32_t pairs = 0;
  uLong crc = 0;
  for (char32_t from = 0; from <= 0x10FFFF; ++from) {
    const char32_t to = FoldCase(from);
    if (to != from) {
      std::array<Bytef, 8> bytes;
      for (unsigned i = 0; i < 4; ++i) {
        bytes[i] = static_cast<Bytef>(from >> (8 * i));
        bytes[4 + i] = static_cast<Bytef>(to >> (8 * i));
      }
      crc = crc32(crc, bytes.data(), bytes.size());
      ++pairs;
    }
  }
  EXPECT_EQ(pairs, 1454u);
  EXPECT_EQ(crc, 0x6141ae21u);
}

}  // namespace
}  // namespace ostrell
