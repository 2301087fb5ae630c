#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "eventlog/apis.h"
#include "eventlog/event_record.h"
#include "eventlog/filters.h"
#include "eventlog/reading.h"

namespace eventlog {

// Reads a whole log through the system's older functions, newest record first, and tests each
// record here. Failures show as missing records and in the last error's text.
class LegacyEventLogReader {
 public:
  // `serverName` is empty for the local computer.
  explicit LegacyEventLogReader(std::wstring serverName = {}, bool open = true,
                                const ClassicEventLogApi& functions = SystemClassicEventLog());

  // Gives `take` the records that `filter` lets pass; those read before a failure count. The buffer
  // grows when the system asks for more, up to the most that it documents, 0x7FFFF bytes. The time
  // is looked at between two reads.
  ReadingEnd ReadEvents(const std::wstring& logName, const EventFilter& filter,
                        const TimeBudget& budget, const RecordTaker& take);

  // The text of the last failure; a success leaves it.
  const std::wstring& LastError() const { return lastError; }

 private:
  // A buffer's worth of records; nothing at the end and on failure.
  std::optional<std::span<const std::byte>> ReadOn(const ClassicLog& log,
                                                   std::vector<std::byte>& buffer);
  void Fail(uint32_t code) { lastError = api.errorText(code); }

  std::wstring server;
  std::wstring lastError;
  bool isOpen;
  const ClassicEventLogApi& api;
};

// Appends the records that stand packed in `bytes` and that `filter` lets pass. Layout: the
// vendor's EVENTLOGRECORD, little-endian. A record that is shorter than its fixed part or longer
// than what is left ends the walk. Within a record a text without terminator ends with the record,
// and one that begins outside is empty.
void WalkClassicRecords(std::span<const std::byte> bytes, const std::wstring& logName,
                        const EventFilter& filter, std::vector<EventRecord>& records);

}  // namespace eventlog
