#include "base/bytes.h"

#include <gtest/gtest.h>

#include <limits>

#include "base/arithmetic.h"

namespace ostrell {
namespace {

constexpr uint64_t kHuge = std::numeric_limits<uint64_t>::max();

TEST(Slice, OnlyWhatLiesInside) {
  const auto bytes = BytesOf("abcdef");
  struct Case {
    uint64_t offset, length;
    const char* expected;  // null: nothing
  };
  for (const auto& [offset, length, expected] :
       {Case{0, 6, "abcdef"}, Case{2, 3, "cde"}, Case{6, 0, ""}, Case{0, 0, ""},
        Case{0, 7, nullptr}, Case{6, 1, nullptr}, Case{7, 0, nullptr}, Case{1, kHuge, nullptr},
        Case{kHuge, 1, nullptr}, Case{kHuge, kHuge, nullptr}}) {
    const auto slice = Slice(bytes, offset, length);
    ASSERT_EQ(slice.has_value(), expected != nullptr) << offset << ' ' << length;
    if (slice) {
      EXPECT_EQ(TextOf(*slice), expected);
    }
  }
}

TEST(ReadLittleEndian, WidthsAndEnds) {
  const auto bytes = BytesOf("\x01\x02\x03\x04\x05\x06\x07\xF8\x09");
  EXPECT_EQ(ReadLittleEndian<uint8_t>(bytes, 7), 0xF8);
  EXPECT_EQ(ReadLittleEndian<uint16_t>(bytes, 7), 0x09F8);
  EXPECT_EQ(ReadLittleEndian<uint32_t>(bytes, 1), 0x05040302u);
  EXPECT_EQ(ReadLittleEndian<uint64_t>(bytes, 0), 0xF807060504030201u);
  EXPECT_EQ(ReadLittleEndian<uint64_t>(bytes, 2), std::nullopt);
  EXPECT_EQ(ReadLittleEndian<uint8_t>(bytes, 9), std::nullopt);
  EXPECT_EQ(ReadLittleEndian<uint32_t>(bytes, kHuge - 1), std::nullopt);
}

TEST(WrappingDifference, WrapsInsteadOfOverflowing) {
  constexpr int64_t kMin = std::numeric_limits<int64_t>::min();
  constexpr int64_t kMax = std::numeric_limits<int64_t>::max();
  EXPECT_EQ(WrappingDifference(5, 7), -2);
  EXPECT_EQ(WrappingDifference(0, kMin), kMin);
  EXPECT_EQ(WrappingDifference(-2, kMax), kMax);
}

}  // namespace
}  // namespace ostrell
