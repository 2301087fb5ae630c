#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace ostrell {

// The kinds of detection records: the low 31 bits of a record's "fid".
//
// What the detection log reports, in the order in which the record store is asked.
inline constexpr std::array<int32_t, 23> kReportedKinds = {
    1, 2, 3, 4, 5, 15, 17, 28, 30, 31, 41, 46, 47, 48, 49, 50, 53, 56, 60, 64, 59, 66, 69};

// The top bit of "fid": the user submitted the record.
inline constexpr uint32_t kSubmittedBit = 0x80000000;

constexpr uint32_t KindOf(int32_t fid) {
  return static_cast<uint32_t>(fid) & ~kSubmittedBit;
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

}  // namespace ostrell
