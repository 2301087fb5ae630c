#include "base/bytes.h"
#include "fuzz/fuzz_target.h"
#include "transport/packed_record.h"

namespace ostrell {
namespace {

// Where the record ends by its size word.
uint64_t PlainEnd(std::string_view block) {
  const uint32_t word = *ReadLittleEndian<uint32_t>(BytesOf(block), 8);
  return word / (1U << 30) == 3 ? word % (1U << 30) : word % (1U << 26);
}

}  // namespace

void CheckInput(std::string_view input) {
  const auto text = PackedRecordJson(BytesOf(input));
  const bool hasFields = input.size() >= 13;
  const size_t begin = hasFields ? size_t{14} + static_cast<uint8_t>(input[12]) : 0;
  const uint64_t end = hasFields ? PlainEnd(input) : 0;
  Require(text.has_value() == (hasFields && begin <= end && end <= input.size()));
  Require(!text || (text->data() == input.data() + begin && text->size() == end - begin));
}

}  // namespace ostrell
