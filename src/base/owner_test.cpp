#include "base/owner.h"

#include <gtest/gtest.h>

#include <new>
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

bool isMemoryShort = false;

struct ScarceKey {
  explicit ScarceKey(int number) : value(number) {}
  ScarceKey(const ScarceKey& other) : value(isMemoryShort ? throw std::bad_alloc() : other.value) {}
  bool operator==(const ScarceKey& other) const { return value == other.value; }

  int value;
};

struct ScarceHash {
  size_t operator()(const ScarceKey& key) const { return static_cast<size_t>(key.value); }
};

}  // namespace
}  // namespace ostrell

template <>
struct std::hash<ostrell::ScarceKey> : ostrell::ScarceHash {};

namespace ostrell {
namespace {

TEST(LimitedSet, CallerSaysWhatIsSoWithoutMemory) {
  LimitedSet<ScarceKey> set(2);
  EXPECT_TRUE(set.Add(ScarceKey(1), false));
  isMemoryShort = true;
  EXPECT_FALSE(set.Add(ScarceKey(2), false));
  EXPECT_TRUE(set.Add(ScarceKey(2), true));
  EXPECT_FALSE(set.Add(ScarceKey(1), true));
}

}  // namespace
}  // namespace ostrell
