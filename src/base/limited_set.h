#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <random>
#include <vector>

namespace ostrell {

// Unique unsigned numbers, each looked up and added in constant time, up to a limit. A full set,
// and one that gets no more memory, keeps what it has and forgets what comes. A full one takes a
// forgotten key for new every time.
//
// Where a key lies is decided by chance (multiply-shift hashing, Dietzfelbinger et al. 1997), so
// that nobody can choose keys that make the set slow. A key takes up to three times its size.
template <class Key>
class LimitedSet {
 public:
  explicit LimitedSet(size_t maxKeys) : limit(maxKeys) {}

  // True when the key is new; from then on it is not, unless it was forgotten. `withoutMemory` is
  // the answer for a key that is not known and for which there is no memory.
  bool Add(Key key, bool withoutMemory) noexcept {
    if (key == kFree ? hasFree : (!slots.empty() && SlotOf(key) == key)) {
      return false;
    }
    if (count == limit) {
      return true;
    }
    if (key == kFree) {
      hasFree = true;
    } else if (count < slots.size() / 4 * 3 || Grow()) {
      SlotOf(key) = key;
    } else {
      return withoutMemory;
    }
    ++count;
    return true;
  }

 private:
  static constexpr Key kFree = 0;  // what a slot without a key holds

  // The slot that holds the key, or else the free one for it.
  Key& SlotOf(Key key) {
    size_t at = (key * factor) >> (64 - std::countr_zero(slots.size()));
    while (slots[at] != key && slots[at] != kFree) {
      at = (at + 1) & (slots.size() - 1);
    }
    return slots[at];
  }

  bool Grow() noexcept {
    try {
      std::vector<Key> old(slots.empty() ? 16 : 2 * slots.size(), kFree);
      old.swap(slots);
      for (const Key key : old) {
        if (key != kFree) {
          SlotOf(key) = key;
        }
      }
      return true;
    } catch (const std::exception&) {
      return false;
    }
  }

  static uint64_t RandomOddNumber() {
    std::random_device chance;
    return uint64_t{chance()} << 32 | chance() | 1;
  }

  size_t limit;
  size_t count = 0;
  bool hasFree = false;
  std::vector<Key> slots;  // a power of two
  uint64_t factor = RandomOddNumber();
};

}  // namespace ostrell
