// Preloaded into a program (LD_PRELOAD), counts what it asks of the C library, and prints at its
// end to standard error: "ALLOCATIONS BYTES-ALLOCATED COPIES BYTES-COPIED". Copies are the calls of
// memcpy and memmove that go through the library; what the compiler copies in place is not seen.
#include <dlfcn.h>

#include <atomic>
#include <cstddef>
#include <cstdio>

namespace {

std::atomic<size_t> allocations;
std::atomic<size_t> allocated;
std::atomic<size_t> copies;
std::atomic<size_t> copied;

template <class Function>
Function* Next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void CountAllocation(size_t size) {
  ++allocations;
  allocated += size;
}

void* Copy(void* to, const void* from, size_t size) {
  ++copies;
  copied += size;
  static auto* const next = Next<void*(void*, const void*, size_t)>("memmove");
  return next(to, from, size);
}

__attribute__((destructor)) void Print() {
  std::fprintf(stderr, "%zu %zu %zu %zu\n", allocations.load(), allocated.load(), copies.load(),
               copied.load());
}

}  // namespace

extern "C" {

void* malloc(size_t size) {
  static auto* const next = Next<void*(size_t)>("malloc");
  CountAllocation(size);
  return next(size);
}

void* realloc(void* block, size_t size) {
  static auto* const next = Next<void*(void*, size_t)>("realloc");
  CountAllocation(size);
  return next(block, size);
}

void* memcpy(void* to, const void* from, size_t size) {
  return Copy(to, from, size);
}

void* memmove(void* to, const void* from, size_t size) {
  return Copy(to, from, size);
}

}  // extern "C"
