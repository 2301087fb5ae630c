#pragma once

#include <cstdint>
#include <string>

#include "base/owner.h"
#include "eventlog/reading.h"

namespace eventlog {

// A handle with the table of functions that it belongs to, which closes it.
template <class Api>
struct ApiHandleTraits {
  struct Handle {
    void* value = nullptr;
    const Api* api = nullptr;
    bool operator==(const Handle& other) const { return value == other.value; }
  };
  static Handle Empty() { return {}; }
  static void Close(Handle handle) noexcept { handle.api->close(handle.value); }
};
template <class Api>
using ApiHandle = ostrell::Owner<ApiHandleTraits<Api>>;

// The functions of "wevtapi.dll" that a session uses, with the vendor's parameters (winevt.h), and
// what tells their failures. A test puts its own in place.
struct EvtApi {
  void* (*openSession)(uint32_t loginClass, void* login, uint32_t timeout, uint32_t flags);
  void* (*query)(void* session, const wchar_t* path, const wchar_t* text, uint32_t flags);
  bool (*next)(void* results, uint32_t size, void** events, uint32_t timeout, uint32_t flags,
               uint32_t* returned);
  bool (*render)(void* context, void* event, uint32_t flags, uint32_t bufferBytes, void* buffer,
                 uint32_t* usedBytes, uint32_t* propertyCount);
  bool (*close)(void* handle);
  void* (*openChannelEnum)(void* session, uint32_t flags);
  bool (*nextChannelPath)(void* channels, uint32_t bufferCharacters, wchar_t* buffer,
                          uint32_t* usedCharacters);
  uint32_t (*lastError)();
  std::wstring (*errorText)(uint32_t code);
};

// The system's library, loaded once for the process. No entry is kept: each call looks its own up
// by name, and fails in the ordinary way (null or false) when library or name is missing. Windows
// only.
const EvtApi& LoadedEvtApi();

using EvtHandle = ApiHandle<EvtApi>;

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

// Where a reader finds the event log's functions and its clock. Either interface is looked for when
// it is first used.
struct EventLogApis {
  const EvtApi& (*modern)();
  const ClassicEventLogApi& (*classic)();
  TimeBudget::Clock clock;
};

// What the system says of an error code, with the line break at its end, or "Unknown error (code:
// N)" when it knows none. Windows only.
std::wstring SystemErrorText(uint32_t code);

}  // namespace eventlog
