#pragma once

#include <cstdint>

namespace ostrell {

// One of the product's closed libraries, loaded at run time from the program's own directory by
// full path, so that no other folder can supply it. It stays loaded until the process ends. A
// library or entry that is missing is null, and its wrapper then acts as on any failure of it.
class ClosedLibrary {
 public:
  // `fileName` is the bare name, such as L"policydb.dll".
  explicit ClosedLibrary(const wchar_t* fileName);

  template <class Function>
  Function ByOrdinal(uint16_t ordinal) const {
    // GetProcAddress takes an ordinal in the place of the name.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    return reinterpret_cast<Function>(Find(reinterpret_cast<const char*>(uintptr_t{ordinal})));
  }
  template <class Function>
  Function ByName(const char* name) const {
    return reinterpret_cast<Function>(Find(name));
  }

 private:
  using Address = void (*)();
  Address Find(const char* nameOrOrdinal) const;

  void* module = nullptr;
};

}  // namespace ostrell
