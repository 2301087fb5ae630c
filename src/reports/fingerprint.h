#pragma once

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/limited_set.h"

namespace ostrell {

// A fingerprint tells which records are one event: the CRC-32 (ISO-HDLC, as zlib has it) of the
// fields that identify it, chained over one field after the other from 0 on.
inline uint32_t ChainFingerprint(uint32_t fingerprint, std::string_view bytes) {
  if (bytes.data() == nullptr) {
    return fingerprint;  // zlib would begin anew
  }
  return static_cast<uint32_t>(
      crc32_z(fingerprint, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

// The fingerprints that a report has met. The records of those past the limit are sent unasked.
using FingerprintSet = LimitedSet<uint32_t>;
inline constexpr size_t kMostFingerprints = 0x1fffffff;

}  // namespace ostrell
