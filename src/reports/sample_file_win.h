#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "base/byte_buffer.h"

namespace ostrell {

// A file that may be sent as a sample, read without hindering anybody else: others may write to it,
// rename and delete it meanwhile, and what they do afterwards changes nothing here. Names that
// begin with the system directory mean the real one, also in a 32-bit process.
class SampleFile {
 public:
  enum class State {
    kUnreadable,  // not to be opened, no file on a disk, not to be read as a whole, or too large
                  // for the memory; or a path of 512 UTF-16 units or more
    kWrongSize,   // outside of the sizes that are sent
    kReadable,
  };

  // `path` is UTF-8.
  explicit SampleFile(const char* path);

  State GetState() const { return state; }

  // The file as it was when it was opened; only where it is readable.
  std::span<const std::byte> Bytes() const { return *content; }

 private:
  State state = State::kUnreadable;
  std::optional<ByteBuffer> content;
};

}  // namespace ostrell
