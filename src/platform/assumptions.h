#pragma once

#include <cstddef>
#include <cstdint>

namespace ostrell::assumed {

// What this program assumes of the product's closed libraries where nothing else fixes it. Each
// line is to be held against the library's own header; all other entries in this folder are fixed.

inline constexpr size_t kObjectReadEntry = 1;               // svclink object: read
inline constexpr size_t kObjectWriteEntry = 2;              // svclink object: write
inline constexpr size_t kObjectSizeEntry = 3;               // svclink object: size
inline constexpr size_t kRecordDataOffset = 32;             // svclink record: data accessor
inline constexpr char kTraceLogExport[] = "TraceLogWrite";  // tracelog: name and signature

// How wide a result is. Counts and failures (negative) are read as 32 bits, sizes, addresses and
// versions as 64. A yes or no is read as its low eight bits: a library whose function returns a
// bool leaves the bits above undefined.
constexpr bool IsYes(int32_t result) {  // policydb: restore, read a value; svclink: query-kind
  return static_cast<uint8_t>(result) != 0;
}

}  // namespace ostrell::assumed
