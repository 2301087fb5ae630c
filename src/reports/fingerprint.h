#pragma once

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "base/json.h"
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

// A field of "detail" that takes part in the fingerprint of a record.
struct FingerprintField {
  enum class Type {
    kText,          // its bytes; nothing when it is missing or no text
    kInteger,       // the low 32 bits, little-endian; 0 when it is missing or no integer
    kTextOfMaster,  // text of "processes"."master"
    kTextOfRogue,   // text that counts only where "clsname" is "rogue"
    kTextOfOthers,  // text that counts only elsewhere
  };

  const char* name;
  Type type;
};

// The fields that tell two records of a kind apart, in the order of the fingerprint. Empty for a
// kind that has none: its records are one event.
std::span<const FingerprintField> FingerprintFields(uint32_t kind);

// The fingerprint of a normalised record (detection_records.h); 0 without "fid" or "detail".
uint32_t RecordFingerprint(const json_t* record);

// The most fingerprints that a report remembers; records past them are taken unasked.
inline constexpr size_t kMaxFingerprints = 0x1fffffff;

// The fingerprints that a report met.
class MetFingerprints : public LimitedSet<uint32_t> {
 public:
  MetFingerprints() : LimitedSet(kMaxFingerprints) {}
  // What cannot be remembered is taken every time.
  bool IsNew(uint32_t fingerprint) { return Add(fingerprint, true); }
};

}  // namespace ostrell
