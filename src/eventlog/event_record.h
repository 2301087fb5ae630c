#pragma once

#include <cstdint>
#include <string>

#include "base/calendar.h"

namespace eventlog {

// One event of the Windows event log: a plain value.
struct EventRecord {
  uint32_t eventId = 0;
  uint32_t level = 0;  // 1 critical, 2 error, 3 warning, 4 information, 5 verbose, 0 unknown
  std::wstring provider;
  std::wstring channel;               // or the name of the classic log
  std::wstring data;                  // the event as XML, or its insertion strings joined by blanks
  ostrell::SystemTime timeCreated{};  // UTC
  uint32_t recordNumber = 0;          // of the classic reader, 0 otherwise
  uint64_t processId = 0;
  uint64_t threadId = 0;
  std::wstring computer;
};

}  // namespace eventlog
