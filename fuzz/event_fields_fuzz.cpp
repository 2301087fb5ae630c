#include <stdexcept>
#include <string>

#include "eventlog/render_record.h"
#include "fuzz/fuzz_target.h"
#include "unified/event_fields.h"

namespace {

// The input as UTF-16, an odd byte at its end left out.
std::wstring WideInput(const uint8_t* data, size_t size) {
  std::wstring text;
  for (size_t i = 0; i + 1 < size; i += 2) {
    text.push_back(static_cast<wchar_t>(data[i] | data[i + 1] << 8));
  }
  return text;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace ostrell;
  const std::wstring text = WideInput(data, size);
  const ApplicationFields fields = ExtractApplicationFields(text);
  Require(text.find(fields.name) != std::wstring::npos);
  Require(text.find(fields.timestamp) != std::wstring::npos);
  Require(!NamesProduct(text) || text.size() >= 7);
  try {
    eventlog::EventRecord record;
    eventlog::EventRecordFromXml(text, record);
  } catch (const std::invalid_argument&) {  // a number that is none
  } catch (const std::out_of_range&) {      // a number that is too large
  }
  return 0;
}
