// Stand-in for the system's event log interface where that is not complete. It serves recorded
// events from files beside the program (event_channels_win.h) and evaluates the query that it is
// handed; what it does not understand it refuses. Signatures and error codes are the vendor's
// (winevt.h, "Windows Event Log Functions").

#include <algorithm>
#include <mutex>

#include "base/text.h"
#include "devkit/product/event_channels_win.h"
#include "devkit/product/event_handles_win.h"
#include "devkit/product/event_query.h"
#include "devkit/product/files_win.h"
#include "devkit/product/guarded.h"

namespace ostrell {
namespace {

std::mutex handlesMutex;
EventHandles openHandles;

// Runs one entry over the open handles, one at a time. `body` gives 0 or a Windows error code,
// which becomes the thread's last error; true for 0.
template <class Body>
bool Served(Body&& body) {
  const DWORD error = Guarded(DWORD{ERROR_OUTOFMEMORY}, [&] {
    const std::lock_guard lock(handlesMutex);
    return DWORD{body(openHandles)};
  });
  if (error != ERROR_SUCCESS) {
    SetLastError(error);
  }
  return error == ERROR_SUCCESS;
}

// The rendered events of a channel that the condition selects.
std::vector<std::wstring> Select(const EventChannel& channel, const EventCondition& condition) {
  std::vector<std::wstring> selected;
  for (const RecordedEvent& event : channel.events) {
    if (condition(event.system)) {
      selected.push_back(WideFromUtf8(event.xml.c_str()).value_or(L""));
    }
  }
  return selected;
}

DWORD RunQuery(EventHandles& handles, const wchar_t* text, DWORD flags, EVT_HANDLE& results) {
  const auto query = ParseEventQuery(Utf8FromWide(text));
  if (!query || (!query->condition && (flags & EvtQueryTolerateQueryErrors) == 0)) {
    return ERROR_EVT_INVALID_QUERY;
  }
  const EventChannel channel = LoadEventChannel(WideFromUtf8(query->channel.c_str()).value_or(L""));
  if (channel.error == ERROR_SUCCESS) {
    results = handles.Add(EventResults{query->condition ? Select(channel, query->condition)
                                                        : std::vector<std::wstring>()});
  }
  return channel.error;
}

DWORD TakeEvents(EventHandles& handles, EventResults& results, DWORD count, EVT_HANDLE* events,
                 DWORD& returned) {
  while (returned < count && results.next < results.events.size()) {
    events[returned] = handles.Add(RenderedEvent{results.events[results.next]});
    ++results.next;
    ++returned;
  }
  return returned > 0 ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_NO_MORE_ITEMS};
}

// Copies `text` with its terminator. `capacity` and `needed` count characters.
DWORD CopyText(const std::wstring& text, DWORD capacity, wchar_t* buffer, DWORD needed) {
  if (capacity < needed) {
    return ERROR_INSUFFICIENT_BUFFER;
  }
  if (buffer == nullptr) {
    return ERROR_INVALID_PARAMETER;
  }
  std::copy_n(text.c_str(), needed, buffer);
  return ERROR_SUCCESS;
}

DWORD SizeOf(const std::wstring& text) {
  return static_cast<DWORD>(text.size() + 1);
}

}  // namespace

// Knows one remote computer, "localhost", whose logs are the local ones.
extern "C" EVT_HANDLE WINAPI EvtOpenSession(EVT_LOGIN_CLASS loginClass, PVOID login, DWORD timeout,
                                            DWORD flags) {
  EVT_HANDLE session = nullptr;
  Served([&](EventHandles& handles) -> DWORD {
    if (loginClass != EvtRpcLogin || login == nullptr || timeout != 0 || flags != 0) {
      return ERROR_INVALID_PARAMETER;
    }
    const wchar_t* server = static_cast<EVT_RPC_LOGIN*>(login)->Server;
    if (server == nullptr || std::wstring_view(server) != L"localhost") {
      return RPC_S_SERVER_UNAVAILABLE;
    }
    session = handles.Add(EventSession{});
    return ERROR_SUCCESS;
  });
  return session;
}

extern "C" EVT_HANDLE WINAPI EvtQuery(EVT_HANDLE session, LPCWSTR path, LPCWSTR query,
                                      DWORD flags) {
  constexpr DWORD kKnownFlags =
      EvtQueryChannelPath | EvtQueryForwardDirection | EvtQueryTolerateQueryErrors;
  EVT_HANDLE results = nullptr;
  Served([&](EventHandles& handles) -> DWORD {
    if (!handles.IsSession(session)) {
      return ERROR_INVALID_HANDLE;
    }
    if (path != nullptr || query == nullptr || (flags & ~kKnownFlags) != 0) {
      return ERROR_INVALID_PARAMETER;
    }
    return RunQuery(handles, query, flags, results);
  });
  return results;
}

extern "C" BOOL WINAPI EvtNext(EVT_HANDLE resultSet, DWORD count, EVT_HANDLE* events, DWORD,
                               DWORD flags, PDWORD returned) {
  return Served([&](EventHandles& handles) -> DWORD {
    if (count == 0 || events == nullptr || flags != 0 || returned == nullptr) {
      return ERROR_INVALID_PARAMETER;
    }
    *returned = 0;
    auto* results = handles.Find<EventResults>(resultSet);
    return results == nullptr ? ERROR_INVALID_HANDLE
                              : TakeEvents(handles, *results, count, events, *returned);
  });
}

// Renders as XML only. Sizes are bytes.
extern "C" BOOL WINAPI EvtRender(EVT_HANDLE context, EVT_HANDLE fragment, DWORD flags,
                                 DWORD bufferSize, PVOID buffer, PDWORD bufferUsed,
                                 PDWORD propertyCount) {
  return Served([&](EventHandles& handles) -> DWORD {
    const auto* event = handles.Find<RenderedEvent>(fragment);
    if (!handles.IsSession(context) || event == nullptr) {
      return ERROR_INVALID_HANDLE;
    }
    if (flags != EvtRenderEventXml || bufferUsed == nullptr) {
      return ERROR_INVALID_PARAMETER;
    }
    if (propertyCount != nullptr) {
      *propertyCount = 0;
    }
    const DWORD needed = SizeOf(event->xml);
    *bufferUsed = needed * sizeof(wchar_t);
    return CopyText(event->xml, bufferSize / sizeof(wchar_t), static_cast<wchar_t*>(buffer),
                    needed);
  });
}

extern "C" BOOL WINAPI EvtClose(EVT_HANDLE object) {
  return Served([&](EventHandles& handles) -> DWORD {
    return handles.Close(object) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
  });
}

extern "C" EVT_HANDLE WINAPI EvtOpenChannelEnum(EVT_HANDLE session, DWORD flags) {
  EVT_HANDLE enumeration = nullptr;
  Served([&](EventHandles& handles) -> DWORD {
    if (!handles.IsSession(session)) {
      return ERROR_INVALID_HANDLE;
    }
    if (flags != 0) {
      return ERROR_INVALID_PARAMETER;
    }
    enumeration = handles.Add(ChannelEnumeration{EventChannelNames()});
    return ERROR_SUCCESS;
  });
  return enumeration;
}

// Sizes are characters. A name that does not fit stays the next one.
extern "C" BOOL WINAPI EvtNextChannelPath(EVT_HANDLE channelEnum, DWORD bufferSize, LPWSTR buffer,
                                          PDWORD bufferUsed) {
  return Served([&](EventHandles& handles) -> DWORD {
    auto* enumeration = handles.Find<ChannelEnumeration>(channelEnum);
    if (enumeration == nullptr) {
      return ERROR_INVALID_HANDLE;
    }
    if (bufferUsed == nullptr) {
      return ERROR_INVALID_PARAMETER;
    }
    if (enumeration->next == enumeration->names.size()) {
      return ERROR_NO_MORE_ITEMS;
    }
    const std::wstring& name = enumeration->names[enumeration->next];
    *bufferUsed = SizeOf(name);
    const DWORD error = CopyText(name, bufferSize, buffer, *bufferUsed);
    enumeration->next += error == ERROR_SUCCESS ? 1 : 0;
    return error;
  });
}

}  // namespace ostrell
