#pragma once

#include <cstddef>
#include <exception>
#include <optional>
#include <vector>

namespace ostrell {

using ByteBuffer = std::vector<std::byte>;

// Zero bytes, as many as a file or a library says it has; nothing when there is not the memory,
// which is a result here like any other failed reading.
inline std::optional<ByteBuffer> AllocateBytes(size_t size) {
  try {
    return ByteBuffer(size);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace ostrell
