#include "base/limited_set.h"

#include <gtest/gtest.h>

namespace ostrell {

TEST(LimitedSet, FullSetKeepsWhatItHasAndForgetsWhatComes) {
  LimitedSet<uint32_t> set(2);
  EXPECT_TRUE(set.Add(0));
  EXPECT_FALSE(set.Add(0));
  EXPECT_TRUE(set.Add(7));
  EXPECT_TRUE(set.Add(8));
  EXPECT_TRUE(set.Add(8));
  EXPECT_FALSE(set.Add(7));
}

}  // namespace ostrell
