#include "base/owner.h"

#include <gtest/gtest.h>

#include <vector>

#include "base/limited_set.h"

namespace ostrell {
namespace {

std::vector<int> closed;

struct NumberTraits {
  using Handle = int;
  static Handle Empty() { return -1; }
  static void Close(Handle handle) noexcept { closed.push_back(handle); }
};
using Number = Owner<NumberTraits>;

TEST(Owner, ClosesOnceAndNeverTheEmptyValue) {
  closed.clear();
  {
    const Number empty;
    EXPECT_FALSE(empty);
    Number first(0);
    EXPECT_TRUE(first);
    Number second(2);
    second = std::move(first);
    EXPECT_EQ(closed, std::vector{2});
    const Number third(std::move(second));
    EXPECT_EQ(third.Get(), 0);
  }
  EXPECT_EQ(closed, (std::vector{2, 0}));
}

TEST(Owner, AssigningToItselfReleasingAndReceiving) {
  closed.clear();
  Number number(3);
  Number& same = number;
  number = std::move(same);
  EXPECT_EQ(number.Release(), 3);
  EXPECT_TRUE(closed.empty());
  number.Reset(5);
  *number.Receive() = 6;
  EXPECT_EQ(closed, std::vector{5});
}

TEST(LimitedSet, FullSetKeepsWhatItHasAndForgetsWhatComes) {
  LimitedSet<uint32_t> set(2);
  EXPECT_TRUE(set.Add(0, false));
  EXPECT_FALSE(set.Add(0, false));
  EXPECT_TRUE(set.Add(7, false));
  EXPECT_TRUE(set.Add(8, false));
  EXPECT_TRUE(set.Add(8, false));
  EXPECT_FALSE(set.Add(7, false));
}

TEST(LimitedSet, ManyKeysOfAnyPattern) {
  LimitedSet<uint64_t> set(300000);
  for (const bool isNew : {true, false}) {
    for (uint64_t i = 1; i <= 100000; ++i) {
      ASSERT_EQ(set.Add(i, false), isNew) << i;
      ASSERT_EQ(set.Add(i << 40, false), isNew) << i;
      ASSERT_EQ(set.Add(~i, false), isNew) << i;
    }
  }
}

}  // namespace
}  // namespace ostrell
