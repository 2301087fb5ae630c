#include <stdexcept>
#include <string>

#include "base/bytes.h"
#include "eventlog/render_record.h"
#include "fuzz/fuzz_target.h"
#include "unified/event_fields.h"

// The input is UTF-16; an odd byte at its end is left out.
void ostrell::CheckInput(std::string_view input) {
  std::wstring text;
  while (const auto unit = ReadLittleEndian<uint16_t>(BytesOf(input), 2 * text.size())) {
    text += static_cast<wchar_t>(*unit);
  }
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
}
