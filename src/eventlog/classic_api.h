#pragma once

#include <cstdint>
#include <string>

#include "base/owner.h"

namespace eventlog {

// The system's older functions that read a log record by record, with what tells their failures. A
// test puts its own in place.
struct ClassicEventLogApi {
  void* (*open)(const wchar_t* server, const wchar_t* log);
  bool (*read)(void* log, uint32_t flags, uint32_t offset, void* buffer, uint32_t bufferBytes,
               uint32_t* readBytes, uint32_t* neededBytes);
  bool (*close)(void* log);
  uint32_t (*lastError)();
  std::wstring (*errorText)(uint32_t code);
};

// The running system's. Windows only.
const ClassicEventLogApi& SystemClassicEventLog();

// An open log with the functions that it belongs to.
struct ClassicLogValue {
  void* log = nullptr;
  const ClassicEventLogApi* api = nullptr;
  bool operator==(const ClassicLogValue& other) const { return log == other.log; }
};
struct ClassicLogTraits {
  using Handle = ClassicLogValue;
  static Handle Empty() { return {}; }
  static void Close(Handle owned) noexcept { owned.api->close(owned.log); }
};
using ClassicLog = ostrell::Owner<ClassicLogTraits>;

}  // namespace eventlog
