#include "base/owner.h"

#include <gtest/gtest.h>

#include <vector>

namespace ostrell {
namespace {

std::vector<int> closed;

struct NumberTraits {
  using Handle = int;
  static Handle Empty() { return -1; }
  static void Close(Handle handle) noexcept { closed.push_back(handle); }
};
using Number = Owner<NumberTraits>;

class OwnerTest : public testing::Test {
 protected:
  void SetUp() override { closed.clear(); }
};

TEST_F(OwnerTest, ClosesOnceAndNeverTheEmptyValue) {
  {
    const Number empty;
    const Number zero(0);
    EXPECT_FALSE(empty);
    EXPECT_TRUE(zero);
  }
  EXPECT_EQ(closed, std::vector{0});
}

TEST_F(OwnerTest, MovingHandsOverAndAssigningClosesWhatWasHeld) {
  {
    Number first(1);
    Number second(2);
    second = std::move(first);
    EXPECT_EQ(closed, std::vector{2});
    EXPECT_EQ(second.Get(), 1);
    const Number third(std::move(second));
    EXPECT_EQ(third.Get(), 1);
  }
  EXPECT_EQ(closed, (std::vector{2, 1}));
}

TEST_F(OwnerTest, AssigningToItselfKeepsTheHandle) {
  Number number(3);
  Number& same = number;
  number = std::move(same);
  EXPECT_EQ(number.Get(), 3);
  EXPECT_TRUE(closed.empty());
}

TEST_F(OwnerTest, ReleaseGivesUpAndReceiveClosesFirst) {
  Number number(4);
  EXPECT_EQ(number.Release(), 4);
  EXPECT_TRUE(closed.empty());
  number.Reset(5);
  *number.Receive() = 6;
  EXPECT_EQ(closed, std::vector{5});
}

}  // namespace
}  // namespace ostrell
