#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "base/mapped_file_win.h"

namespace ostrell {

// A file that may be sent as a sample, opened without hindering anybody else: others may write to
// it, rename and delete it meanwhile. Names that begin with the system directory mean the real one,
// also in a 32-bit process.
class SampleFile {
 public:
  enum class State {
    kUnreadable,  // not to be opened, or not to be read; or a path of 512 UTF-16 units or more
    kWrongSize,   // outside of the sizes that are sent
    kReadable,
  };

  // `path` is UTF-8.
  explicit SampleFile(const char* path);

  State GetState() const { return state; }

  // The file as long as it was when it was opened; only where it is readable.
  std::span<const std::byte> Bytes() const { return mapped->Bytes(); }

 private:
  State state = State::kUnreadable;
  std::optional<MappedFile> mapped;
};

}  // namespace ostrell
