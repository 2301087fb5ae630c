#include "tests/support/scarce_memory.h"

#include <cstdlib>
#include <new>

namespace {

int64_t untilFailure = 0;

}  // namespace

namespace ostrell {

ScarceMemory::ScarceMemory(int64_t failing) {
  untilFailure = failing;
}

ScarceMemory::~ScarceMemory() {
  untilFailure = 0;
}

}  // namespace ostrell

void* operator new(size_t size) {
  void* const memory = untilFailure > 0 && --untilFailure == 0 ? nullptr : std::malloc(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, size_t) noexcept {
  std::free(memory);
}
