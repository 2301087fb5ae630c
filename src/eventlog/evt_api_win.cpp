#include <windows.h>

#include <winevt.h>

#include "eventlog/evt_api.h"
#include "eventlog/system_error_text.h"

namespace eventlog {
namespace {

struct ModuleTraits {
  using Handle = HMODULE;
  static Handle Empty() { return nullptr; }
  static void Close(Handle module) noexcept { FreeLibrary(module); }
};
using WevtApiModule = ostrell::Owner<ModuleTraits>;

// Loaded when it is first asked for: by then the process prefers the system's own library to one of
// that name beside the program.
HMODULE WevtApi() {
  static const WevtApiModule module(LoadLibraryA("wevtapi.dll"));
  return module.Get();
}

// Calls the function of that name; an empty result when it is missing.
template <class Function, class... Args>
auto Call(const char* name, Args... args) -> decltype(std::declval<Function*>()(args...)) {
  const FARPROC found = WevtApi() != nullptr ? GetProcAddress(WevtApi(), name) : nullptr;
  if (found == nullptr) {
    return {};
  }
  return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(found))(args...);
}

void* OpenSession(uint32_t loginClass, void* login, uint32_t timeout, uint32_t flags) {
  return Call<decltype(EvtOpenSession)>("EvtOpenSession", static_cast<EVT_LOGIN_CLASS>(loginClass),
                                        login, DWORD{timeout}, DWORD{flags});
}

void* Query(void* session, const wchar_t* path, const wchar_t* text, uint32_t flags) {
  return Call<decltype(EvtQuery)>("EvtQuery", session, path, text, DWORD{flags});
}

bool Next(void* results, uint32_t size, void** events, uint32_t timeout, uint32_t flags,
          uint32_t* returned) {
  DWORD count = 0;
  const bool isRead = Call<decltype(EvtNext)>("EvtNext", results, DWORD{size}, events,
                                              DWORD{timeout}, DWORD{flags}, &count) != 0;
  *returned = count;
  return isRead;
}

bool Render(void* context, void* event, uint32_t flags, uint32_t bufferBytes, void* buffer,
            uint32_t* usedBytes, uint32_t* propertyCount) {
  DWORD used = 0;
  DWORD properties = 0;
  const bool isRendered =
      Call<decltype(EvtRender)>("EvtRender", context, event, DWORD{flags}, DWORD{bufferBytes},
                                buffer, &used, &properties) != 0;
  *usedBytes = used;
  *propertyCount = properties;
  return isRendered;
}

bool CloseEvt(void* handle) {
  return Call<decltype(EvtClose)>("EvtClose", handle) != 0;
}

void* OpenChannelEnum(void* session, uint32_t flags) {
  return Call<decltype(EvtOpenChannelEnum)>("EvtOpenChannelEnum", session, DWORD{flags});
}

bool NextChannelPath(void* channels, uint32_t bufferCharacters, wchar_t* buffer,
                     uint32_t* usedCharacters) {
  DWORD used = 0;
  const bool isRead =
      Call<decltype(EvtNextChannelPath)>("EvtNextChannelPath", channels, DWORD{bufferCharacters},
                                         buffer, &used) != 0;
  *usedCharacters = used;
  return isRead;
}

uint32_t LastError() {
  return GetLastError();
}

}  // namespace

const EvtApi& LoadedEvtApi() {
  static const EvtApi api = {OpenSession,     Query,           Next,      Render,         CloseEvt,
                             OpenChannelEnum, NextChannelPath, LastError, SystemErrorText};
  return api;
}

}  // namespace eventlog
