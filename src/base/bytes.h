#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

namespace ostrell {

// Little-endian reads and slices of foreign bytes. Every offset and length is checked against the
// bytes that are there, without overflow; what lies outside gives nothing.

// The part of `bytes` from `offset`, `length` bytes long.
inline std::optional<std::span<const std::byte>> Slice(std::span<const std::byte> bytes,
                                                       uint64_t offset, uint64_t length) {
  if (offset > bytes.size() || length > bytes.size() - offset) {
    return std::nullopt;
  }
  return bytes.subspan(static_cast<size_t>(offset), static_cast<size_t>(length));
}

// The integer stored at `offset`, which needs no alignment.
template <std::unsigned_integral T>
std::optional<T> ReadLittleEndian(std::span<const std::byte> bytes, uint64_t offset) {
  const auto field = Slice(bytes, offset, sizeof(T));
  if (!field) {
    return std::nullopt;
  }
  uint64_t value = 0;
  for (size_t i = 0; i < sizeof(T); ++i) {
    value |= std::to_integer<uint64_t>((*field)[i]) << (8 * i);
  }
  return static_cast<T>(value);
}

inline std::span<const std::byte> BytesOf(std::string_view text) {
  return std::as_bytes(std::span(text.data(), text.size()));
}

inline std::string_view TextOf(std::span<const std::byte> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace ostrell
