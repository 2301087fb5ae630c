#include "base/fold_case.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <array>
#include <cstdint>

namespace ostrell {
namespace {

// Number and CRC-32 of the pairs of Unicode's file, in order, eight bytes each, little-endian; both
// were computed by another program from the file itself.
TEST(FoldCase, IsTheWholeTable) {
  uint32_t pairs = 0;
  uLong crc = 0;
  for (char32_t from = 0; from <= 0x120000; ++from) {
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
  EXPECT_EQ(FoldCase(0xFFFFFFFF), char32_t{0xFFFFFFFF});
}

}  // namespace
}  // namespace ostrell
