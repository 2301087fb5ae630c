#include "reports/scan_statistics.h"

#include <zlib.h>

#include "base/bytes.h"

namespace ostrell {

std::optional<std::span<const std::byte>> ScanStatisticsPayload(std::span<const std::byte> file) {
  constexpr uint64_t kHeaderSize = 16;
  const auto crc = ReadLittleEndian<uint32_t>(file, 0);
  const auto length = ReadLittleEndian<uint64_t>(file, 8);
  const auto payload = length ? Slice(file, kHeaderSize, *length) : std::nullopt;
  if (!payload ||
      crc32_z(0, reinterpret_cast<const Bytef*>(payload->data()), payload->size()) != *crc) {
    return std::nullopt;
  }
  return payload;
}

}  // namespace ostrell
