#include <optional>
#include <span>
#include <string_view>

#include "fuzz/fuzz_target.h"
#include "transport/packed_record.h"

namespace {

using namespace ostrell;

// Where the record ends by its size word; nothing when the block ends before its fields.
std::optional<uint64_t> EndOfRecord(std::span<const uint8_t> block) {
  if (block.size() < 13) {
    return std::nullopt;
  }
  const uint64_t word =
      block[8] + block[9] * 0x100ULL + block[10] * 0x10000ULL + block[11] * 0x1000000ULL;
  return word / (1U << 30) == 3 ? word % (1U << 30) : word % (1U << 26);
}

std::optional<std::string_view> Json(std::span<const uint8_t> block) {
  return PackedRecordJson(std::as_bytes(block));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::span block(data, size);
  const auto text = Json(block);
  const auto end = EndOfRecord(block);
  const size_t begin = end ? size_t{14} + block[12] : 0;
  Require(text.has_value() == (end && begin <= *end && *end <= size));
  if (text) {
    const auto* const first = reinterpret_cast<const uint8_t*>(text->data());
    Require(first == data + begin && first + text->size() == data + *end);
    // The record is read to its length and not beyond.
    const auto length = static_cast<size_t>(*end);
    Require(Json(block.first(length)) == text);
    Require(!Json(block.first(length - 1)));
  }
  return 0;
}
