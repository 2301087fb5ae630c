#pragma once

#include <cstddef>
#include <exception>
#include <unordered_set>

namespace ostrell {

// Unique keys, each looked up and added in constant time, up to a limit. A full set, and one that
// gets no more memory, keeps what it has and forgets what comes: a forgotten key is new every time.
template <class Key>
class LimitedSet {
 public:
  explicit LimitedSet(size_t maxKeys) : limit(maxKeys) {}

  // True when the key is new; from then on it is not, unless it was forgotten.
  bool Add(Key key) noexcept {
    try {
      return keys.size() < limit ? keys.insert(key).second : !keys.contains(key);
    } catch (const std::exception&) {
      return true;  // known keys need no memory
    }
  }

 private:
  size_t limit;
  std::unordered_set<Key> keys;
};

}  // namespace ostrell
