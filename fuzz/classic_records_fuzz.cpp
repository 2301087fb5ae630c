#include <span>
#include <vector>

#include "eventlog/classic_reader.h"
#include "eventlog/filters.h"
#include "fuzz/fuzz_target.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr size_t kFixedPart = 56;  // of a record
  const eventlog::CompositeFilter everything;
  std::vector<eventlog::EventRecord> records;
  eventlog::WalkClassicRecords(std::as_bytes(std::span(data, size)), L"Application", everything,
                               records);
  ostrell::Require(records.size() <= size / kFixedPart);
  return 0;
}
