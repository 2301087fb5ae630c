#include "base/bytes.h"
#include "eventlog/classic_reader.h"
#include "fuzz/fuzz_target.h"

void ostrell::CheckInput(std::string_view input) {
  constexpr size_t kFixedPart = 56;  // of a record
  std::vector<eventlog::EventRecord> records;
  eventlog::WalkClassicRecords(BytesOf(input), L"Application", eventlog::CompositeFilter(),
                               records);
  Require(records.size() <= input.size() / kFixedPart);
}
