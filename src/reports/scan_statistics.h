#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "env/settings.h"

namespace ostrell {

// rc4, the scanner statistics: at most once in fifteen days the payload of "tallyx5.dat" in the
// data path, whatever it holds. A due run deletes the five older statistics files below the install
// path and, once it could open it, "tallyx5.dat": sound or not, sent or not. Then the time after
// the work is recorded; while there is no such file every run is due.
void ScanStatsJob(const Settings& settings, int64_t now);

// The payload of a statistics file, little-endian:
//
//   0   4 bytes  CRC-32 (ISO-HDLC) of the payload
//   4   4 bytes  not read
//   8   8 bytes  length of the payload in bytes
//   16  payload; what follows it is ignored
//
// Nothing when the file is short or the CRC another one. The bytes lie in `file`.
std::optional<std::span<const std::byte>> ScanStatisticsPayload(std::span<const std::byte> file);

}  // namespace ostrell
