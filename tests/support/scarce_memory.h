#pragma once

#include <cstdint>

namespace ostrell {

// As long as it lives, allocation number `failing` from its making on, 1 for the first, throws
// std::bad_alloc. Belongs into programs of one thread, which list scarce_memory.cpp.
class ScarceMemory {
 public:
  explicit ScarceMemory(int64_t failing);
  ~ScarceMemory();
  ScarceMemory(const ScarceMemory&) = delete;
  ScarceMemory(ScarceMemory&&) = delete;
  ScarceMemory& operator=(const ScarceMemory&) = delete;
  ScarceMemory& operator=(ScarceMemory&&) = delete;
};

}  // namespace ostrell
