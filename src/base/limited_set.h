#pragma once

#include <cstddef>
#include <exception>
#include <unordered_set>

namespace ostrell {

// Unique keys, each looked up and added in constant time, up to a limit. A full set, and one that
// gets no more memory, keeps what it has and forgets what comes: its user then meets the key again
// as a new one.
template <class Key>
class LimitedSet {
 public:
  explicit LimitedSet(size_t mostKeys) : limit(mostKeys) {}

  bool Contains(Key key) const { return keys.contains(key); }

  // True when the set holds the key afterwards.
  bool Insert(Key key) noexcept {
    try {
      if (keys.size() < limit) {
        keys.insert(key);
      }
      return keys.contains(key);
    } catch (const std::exception&) {
      return false;
    }
  }

 private:
  size_t limit;
  std::unordered_set<Key> keys;
};

}  // namespace ostrell
