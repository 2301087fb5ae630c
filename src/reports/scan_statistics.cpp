#include "reports/scan_statistics.h"

#include <zlib.h>

#include <array>
#include <utility>

#include "base/bytes.h"

namespace ostrell {

std::optional<ByteBuffer> ReadScanStatistics(uint64_t fileSize, const ReadNext& read) {
  std::array<std::byte, 16> header;
  if (fileSize < header.size() || !read(header)) {
    return std::nullopt;
  }
  const auto crc = ReadLittleEndian<uint32_t>(header, 0);
  const auto length = ReadLittleEndian<uint64_t>(header, 8);
  if (*length > fileSize - header.size() || *length > kMostStatisticsBytes) {
    return std::nullopt;
  }
  auto payload = AllocateBytes(static_cast<size_t>(*length));
  if (!payload || !read(*payload)) {
    return std::nullopt;
  }
  const bool isSound =
      crc32_z(0, reinterpret_cast<const Bytef*>(payload->data()), payload->size()) == *crc;
  return isSound ? std::move(payload) : std::nullopt;
}

}  // namespace ostrell
