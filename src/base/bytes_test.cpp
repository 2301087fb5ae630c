#include "base/bytes.h"

#include <gtest/gtest.h>

#include <limits>

#include "base/byte_buffer.h"

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

}  // namespace
}  // namespace ostrell
