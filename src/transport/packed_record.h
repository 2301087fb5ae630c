#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace ostrell {

// The JSON text inside the block of a packed record, which svclink delivers. All little-endian:
//
//   8       32-bit   size word: the record's length is its low 30 bits when both top bits are set,
//                    otherwise its low 26 bits
//   12      8-bit    extension length E
//   14 + E           JSON text, up to the record's length
//
// Nothing when the block ends before its fields, or the length points past the block or lies before
// the text. The text may be empty; it lives as long as the block.
std::optional<std::string_view> PackedRecordJson(std::span<const std::byte> block);

}  // namespace ostrell
