#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "fuzz/fuzz_target.h"
#include "reports/scan_statistics.h"

namespace {

using namespace ostrell;

// A file of which the first `readable` bytes can be read, and which is said to have `toldSize`.
struct File {
  std::string_view bytes;
  size_t readable;
  uint64_t toldSize;
};

uint32_t PlainCrc(std::string_view bytes) {
  uint32_t crc = ~0U;
  for (const char byte : bytes) {
    crc ^= static_cast<uint8_t>(byte);
    for (int bit = 0; bit < 8; ++bit) {
      crc = (crc >> 1) ^ (crc % 2 == 1 ? 0xEDB88320U : 0U);
    }
  }
  return ~crc;
}

// The little-endian number that is all of `bytes`.
uint64_t PlainNumber(std::string_view bytes) {
  uint64_t number = 0;
  for (; !bytes.empty(); bytes.remove_suffix(1)) {
    number = number * 256 + static_cast<uint8_t>(bytes.back());
  }
  return number;
}

// The payload, whatever its CRC.
std::optional<std::string_view> PlainPayload(const File& file) {
  const uint64_t there = std::min<uint64_t>(file.readable, file.toldSize);
  if (there < 16) {
    return std::nullopt;
  }
  const uint64_t length = PlainNumber(file.bytes.substr(8, 8));
  return length <= there - 16 ? std::optional(file.bytes.substr(16, length)) : std::nullopt;
}

struct Opened : OpenFile {
  explicit Opened(const File& opened) : file(opened) {}
  std::optional<uint64_t> Size() const override { return file.toldSize; }
  std::optional<size_t> ReadAt(uint64_t offset, std::span<std::byte> to) const override {
    Require(to.size() <= file.toldSize);
    // A reading that fails may have filled some of the bytes, or all.
    const std::string_view rest = file.bytes.substr(std::min<size_t>(offset, file.bytes.size()));
    const std::string_view taken = rest.substr(0, to.size());
    std::ranges::copy(BytesOf(taken), to.begin());
    return offset + to.size() <= file.readable ? std::optional(taken.size()) : std::nullopt;
  }
  const File& file;
};

std::optional<std::string> Payload(const File& file) {
  const auto payload = ReadScanStatistics(Opened(file));
  return payload ? std::optional(std::string(TextOf(*payload))) : std::nullopt;
}

}  // namespace

// The first byte is how many bytes at the file's end cannot be read, the second, less 128, by how
// many its size is told too large; the rest is the file.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) {
    return 0;
  }
  std::string bytes(reinterpret_cast<const char*>(data) + 2, size - 2);
  const size_t readable = bytes.size() - std::min<size_t>(bytes.size(), data[0]);
  const uint64_t toldSize = std::max<size_t>(bytes.size() + data[1], 128) - 128;
  const File file{bytes, readable, toldSize};
  const auto payload = PlainPayload(file);
  const bool isSound = payload && PlainCrc(*payload) == PlainNumber(file.bytes.substr(0, 4));
  Require(Payload(file) == (isSound ? std::optional(std::string(*payload)) : std::nullopt));

  // The same file with the right CRC is sound.
  if (payload) {
    const uint32_t crc = PlainCrc(*payload);
    for (size_t i = 0; i < 4; ++i) {
      bytes[i] = static_cast<char>(crc >> (8 * i));
    }
    Require(Payload(file) == std::string(*payload));
  }
  return 0;
}
