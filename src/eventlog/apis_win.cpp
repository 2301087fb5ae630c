#include <windows.h>

#include <winevt.h>

#include "eventlog/apis.h"

namespace eventlog {
namespace {

using WevtApiModule = ostrell::ClosedBy<HMODULE, &FreeLibrary>;

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

void* OpenLog(const wchar_t* server, const wchar_t* log) {
  return OpenEventLogW(server, log);
}

bool ReadLog(void* log, uint32_t flags, uint32_t offset, void* buffer, uint32_t bufferBytes,
             uint32_t* readBytes, uint32_t* neededBytes) {
  DWORD done = 0;
  DWORD needed = 0;
  const bool isRead = ReadEventLogW(log, flags, offset, buffer, bufferBytes, &done, &needed) != 0;
  *readBytes = done;
  *neededBytes = needed;
  return isRead;
}

bool CloseLog(void* log) {
  return CloseEventLog(log) != 0;
}

}  // namespace

const EvtApi& LoadedEvtApi() {
  static const EvtApi api = {OpenSession,     Query,           Next,      Render,         CloseEvt,
                             OpenChannelEnum, NextChannelPath, LastError, SystemErrorText};
  return api;
}

const ClassicEventLogApi& SystemClassicEventLog() {
  static const ClassicEventLogApi api = {OpenLog, ReadLog, CloseLog, LastError, SystemErrorText};
  return api;
}

std::wstring SystemErrorText(uint32_t code) {
  constexpr DWORD kFlags =
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
  static_assert(kFlags == 0x1300);
  constexpr DWORD kNeutralLanguage = MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT);
  ostrell::ClosedBy<wchar_t*, &LocalFree> text;
  // With that flag the function takes the address of a pointer in the place of a buffer.
  const DWORD length = FormatMessageW(kFlags, nullptr, code, kNeutralLanguage,
                                      reinterpret_cast<wchar_t*>(text.Receive()), 0, nullptr);
  return text ? std::wstring(text.Get(), length)
              : L"Unknown error (code: " + std::to_wstring(code) + L")";
}

}  // namespace eventlog
