#include <zlib.h>

#include <algorithm>
#include <optional>
#include <string>

#include "base/bytes.h"
#include "fuzz/fuzz_target.h"
#include "reports/scan_statistics.h"

namespace ostrell {
namespace {

// A file of which the first `readable` bytes can be read, and which is said to have `toldSize`.
struct File : OpenFile {
  std::optional<uint64_t> Size() const override { return toldSize; }
  std::optional<size_t> ReadAt(uint64_t offset, std::span<std::byte> to) const override {
    Require(to.size() <= toldSize);
    // A reading that fails may have filled some of the bytes, or all.
    const std::string_view rest =
        std::string_view(bytes).substr(std::min<size_t>(offset, bytes.size()), to.size());
    std::ranges::copy(BytesOf(rest), to.begin());
    return offset + to.size() <= readable ? std::optional(rest.size()) : std::nullopt;
  }

  std::string bytes;
  size_t readable;
  uint64_t toldSize;
};

// The payload, whatever its CRC.
std::optional<std::string> PlainPayload(const File& file) {
  const uint64_t there = std::min<uint64_t>(file.readable, file.toldSize);
  if (there < 16) {
    return std::nullopt;
  }
  const uint64_t length = *ReadLittleEndian<uint64_t>(BytesOf(file.bytes), 8);
  return length <= there - 16 ? std::optional(file.bytes.substr(16, length)) : std::nullopt;
}

std::optional<std::string> Payload(const File& file) {
  const auto payload = ReadScanStatistics(file);
  return payload ? std::optional(std::string(TextOf(*payload))) : std::nullopt;
}

}  // namespace

// The first byte is how many bytes at the file's end cannot be read, the second, less 128, by how
// many its size is told too large; the rest is the file.
void CheckInput(std::string_view input) {
  const size_t unreadable = TakeByte(input);
  const size_t more = TakeByte(input);
  const size_t size = input.size();
  File file;
  file.bytes = input;
  file.readable = size - std::min(size, unreadable);
  file.toldSize = std::max<size_t>(size + more, 128) - 128;
  const auto payload = PlainPayload(file);
  const uLong crc = payload ? crc32(0, reinterpret_cast<const Bytef*>(payload->data()),
                                    static_cast<uInt>(payload->size()))
                            : 0;
  const bool isSound = payload && crc == ReadLittleEndian<uint32_t>(BytesOf(file.bytes), 0);
  Require(Payload(file) == (isSound ? payload : std::nullopt));

  // The same file with the right CRC is sound.
  for (size_t i = 0; i < 4 && payload; ++i) {
    file.bytes[i] = static_cast<char>(crc >> (8 * i));
  }
  Require(Payload(file) == payload);
}

}  // namespace ostrell
