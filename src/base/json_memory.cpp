#include "base/json_memory.h"

#include <jansson.h>

#include <atomic>

namespace ostrell {
namespace {

json_malloc_t allocate = nullptr;
json_free_t release = nullptr;
std::atomic<uint64_t> refusals = 0;
int watches = 0;  // of the agent's one thread

void* Allocate(size_t size) {
  void* const memory = allocate(size);
  if (memory == nullptr) {
    ++refusals;
  }
  return memory;
}

}  // namespace

JsonMemoryWatch::JsonMemoryWatch() : before(refusals) {
  if (watches++ == 0) {
    json_get_alloc_funcs(&allocate, &release);
    json_set_alloc_funcs(Allocate, release);
  }
}

JsonMemoryWatch::~JsonMemoryWatch() {
  if (--watches == 0) {
    json_set_alloc_funcs(allocate, release);
  }
}

bool JsonMemoryWatch::WasRefused() const {
  return refusals != before;
}

}  // namespace ostrell
