#pragma once

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "base/json.h"

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

// The most fingerprints that a report remembers; records past them are taken unasked.
inline constexpr size_t kMaxFingerprints = 0x1fffffff;

// The first record of each fingerprint, in their order, as `entryOf` gives it: a value that the
// record holds, or itself. A record without fingerprint is dropped. Nothing when none is left.
JsonOwner KeepFirstOfEach(const JsonOwner& records,
                          std::optional<uint32_t> (*fingerprintOf)(json_t* record),
                          json_t* (*entryOf)(json_t* record));

}  // namespace ostrell
