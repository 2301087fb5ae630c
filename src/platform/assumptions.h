#pragma once

#include <cstddef>
#include <cstdint>

namespace ostrell::assumed {

// What this program assumes of the product's closed libraries where nothing else fixes it. Each
// line is to be held against the library's own header; all other entries in this folder are fixed.

inline constexpr size_t kObjectReadEntry = 1;    // svclink object: read
inline constexpr size_t kObjectWriteEntry = 2;   // svclink object: write
inline constexpr size_t kObjectSizeEntry = 3;    // svclink object: size
inline constexpr size_t kRecordDataOffset = 32;  // svclink record: data accessor
constexpr bool IsRestored(int32_t result) {      // policydb quarantine: restore
  return result != 0;
}
inline constexpr char kTraceLogExport[] = "TraceLogWrite";  // tracelog: name and signature

}  // namespace ostrell::assumed
