#pragma once

#include <cstddef>
#include <exception>
#include <unordered_set>

namespace ostrell {

// Unique keys, each looked up and added in constant time, up to a limit. A full set, and one that
// gets no more memory, keeps what it has and forgets what comes. A full one takes a forgotten key
// for new every time.
template <class Key>
class LimitedSet {
 public:
  explicit LimitedSet(size_t maxKeys) : limit(maxKeys) {}

  // True when the key is new; from then on it is not, unless it was forgotten. `withoutMemory` is
  // the answer for a key that is not known and for which there is no memory.
  bool Add(Key key, bool withoutMemory) noexcept {
    try {
      return keys.size() < limit ? keys.insert(key).second : !keys.contains(key);
    } catch (const std::exception&) {
      return withoutMemory;  // known keys need none
    }
  }

 private:
  size_t limit;
  std::unordered_set<Key> keys;
};

}  // namespace ostrell
