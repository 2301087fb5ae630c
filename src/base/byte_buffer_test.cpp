#include "base/byte_buffer.h"

#include <gtest/gtest.h>

#include <limits>

namespace ostrell {
namespace {

TEST(AllocateBytes, WithoutMemoryThereAreNone) {
  for (const size_t size : {0, 1, 5000}) {
    EXPECT_EQ(AllocateBytes(size), ByteBuffer(size));
  }
  EXPECT_EQ(AllocateBytes(std::numeric_limits<size_t>::max()), std::nullopt);
}

}  // namespace
}  // namespace ostrell
