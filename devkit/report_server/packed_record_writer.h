#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ostrell {

// The product's packed record, all little-endian:
//
//   0        "OPKR"
//   4        u32   kind, 0x0020ffff
//   8        u32   size word: the length of the whole block; from 2^26 on both top bits are set and
//                  the length has 30 bits
//   12       u8    extension length E
//   13       u8    0
//   14       E bytes of extension
//   14 + E   JSON text, to the block's end
inline constexpr size_t kRecordSizeOffset = 8;
inline constexpr size_t kRecordExtensionOffset = 12;
inline constexpr size_t kRecordHeaderSize = 14;
inline constexpr uint32_t kRecordKind = 0x0020FFFF;

// The block for `json`. `extension` is cut at 255 bytes; a block of 2^30 bytes or more has no size
// word and gives an empty result.
std::string PackRecord(std::string_view json, std::string_view extension);

// The size word that says `length`, which is below 2^30.
uint32_t RecordSizeWord(uint32_t length);

// Overwrites four bytes of `block`, which holds them.
void PutLittleEndian32(std::string& block, size_t offset, uint32_t value);

}  // namespace ostrell
