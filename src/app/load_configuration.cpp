#include <array>
#include <cstdint>

// The image's load configuration (IMAGE_LOAD_CONFIG_DIRECTORY64 of the vendor's winnt.h). The
// linker knows nothing of it: the build enters its address into the header
// (cmake/finish_image).

#pragma pack(push, 1)
struct LoadConfiguration {
  uint32_t size;
  std::array<uint8_t, 0x4A> untilDependentLoadFlags;
  uint16_t dependentLoadFlags;
  std::array<uint8_t, 0xF0> rest;
};
#pragma pack(pop)
static_assert(sizeof(LoadConfiguration) == 0x140);

// Imported libraries are looked for beside the program and in the system's folder, not in the
// current folder nor along the path: LOAD_LIBRARY_SEARCH_APPLICATION_DIR and _SYSTEM32.
extern "C" [[gnu::used]] alignas(16) const LoadConfiguration kOstrellLoadConfiguration{
    .size = sizeof(LoadConfiguration),
    .untilDependentLoadFlags = {},
    .dependentLoadFlags = 0x200 | 0x800,
    .rest = {}};
