#pragma once

#include <cstdint>
#include <string>

#include "eventlog/api_handle.h"

namespace eventlog {

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

}  // namespace eventlog
