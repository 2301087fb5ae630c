#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "base/byte_buffer.h"
#include "env/run.h"

namespace ostrell {

// rc4, the scanner statistics: at most once in fifteen days the payload of "tallyx5.dat" in the
// data path, whatever it holds. A due run deletes the five older statistics files below the install
// path and, once it could open it, "tallyx5.dat": sound or not, sent or not. Then the time after
// the work, by the run's clock, is recorded; while there is no such file every run is due.
void ScanStatsJob(const Run& run);

// The longest payload in bytes that is read into memory. A longer one is not sent, as one for which
// there is no memory.
inline constexpr uint64_t kMaxStatisticsBytes = 256 << 20;

// Reads the payload of a statistics file, little-endian:
//
//   0   4 bytes  CRC-32 (ISO-HDLC) of the payload
//   4   4 bytes  not read
//   8   8 bytes  length of the payload in bytes
//   16  payload; what follows it is ignored
//
// Nothing when the file is shorter than that, the payload too long or the CRC another one, when a
// part cannot be read, and when there is too little memory. No more memory is asked for than the
// file's length has room for.
std::optional<ByteBuffer> ReadScanStatistics(const OpenFile& file);

}  // namespace ostrell
