#include "app/exception_memory.h"

#include <cstddef>

namespace {

bool refusesOnce = false;

}  // namespace

// Every malloc of the program comes here: it is linked with --wrap=malloc.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {
void* __real_malloc(size_t size);
void* __wrap_malloc(size_t size) {
  if (refusesOnce) {
    refusesOnce = false;
    return nullptr;
  }
  return __real_malloc(size);
}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

namespace ostrell {

void ReserveExceptionMemory() {
  refusesOnce = true;
  try {
    throw true;  // from the reserve
  } catch (bool) {
    refusesOnce = false;
  }
}

}  // namespace ostrell
