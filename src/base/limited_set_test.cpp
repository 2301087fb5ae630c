#include "base/limited_set.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace ostrell {
namespace {

TEST(LimitedSet, FullSetKeepsWhatItHasAndForgetsWhatComes) {
  LimitedSet<uint32_t> set(2);
  EXPECT_FALSE(set.Contains(0));
  EXPECT_TRUE(set.Insert(0));
  EXPECT_TRUE(set.Insert(7));
  EXPECT_TRUE(set.Insert(7));
  EXPECT_FALSE(set.Insert(8));
  EXPECT_TRUE(set.Insert(0));
  EXPECT_FALSE(set.Contains(8));
  EXPECT_TRUE(set.Contains(7));
}

}  // namespace
}  // namespace ostrell
