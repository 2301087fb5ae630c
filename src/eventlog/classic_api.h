#pragma once

#include <cstdint>
#include <string>

#include "eventlog/api_handle.h"

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

using ClassicLog = ApiHandle<ClassicEventLogApi>;

}  // namespace eventlog
