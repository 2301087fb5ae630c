#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "base/json.h"

namespace ostrell {

// Detection records of the product. Their kind is the low 31 bits of "fid".
//
// What the detection log reports, in the order in which the record store is asked.
inline constexpr std::array<int32_t, 23> kReportedKinds = {
    1, 2, 3, 4, 5, 15, 17, 28, 30, 31, 41, 46, 47, 48, 49, 50, 53, 56, 60, 64, 59, 66, 69};

// The top bit of "fid": the user submitted the record.
inline constexpr uint32_t kSubmittedBit = 0x80000000;

constexpr uint32_t KindOf(int32_t fid) {
  return static_cast<uint32_t>(fid) & ~kSubmittedBit;
}

// What every record has; nothing when one of them is missing or "fid" is no integer.
struct UnpackedRecord {
  int32_t fid;
  json_t* detail;  // borrowed
};
inline std::optional<UnpackedRecord> UnpackRecord(const json_t* record) {
  const auto fid = IntegerMember(record, "fid");
  json_t* const detail = json_object_get(record, "detail");
  return fid && detail != nullptr ? std::optional(UnpackedRecord{*fid, detail}) : std::nullopt;
}

// What the "detail" of some kinds says of the process that brought another one along; borrowed.
inline json_t* MasterProcess(const json_t* detail) {
  return json_object_get(json_object_get(detail, "processes"), "master");
}

}  // namespace ostrell
