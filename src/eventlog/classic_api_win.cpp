#include <windows.h>

#include "eventlog/classic_api.h"
#include "eventlog/system_error_text.h"

namespace eventlog {
namespace {

void* Open(const wchar_t* server, const wchar_t* log) {
  return OpenEventLogW(server, log);
}

bool Read(void* log, uint32_t flags, uint32_t offset, void* buffer, uint32_t bufferBytes,
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

uint32_t LastError() {
  return GetLastError();
}

}  // namespace

const ClassicEventLogApi& SystemClassicEventLog() {
  static const ClassicEventLogApi api = {Open, Read, CloseLog, LastError, SystemErrorText};
  return api;
}

}  // namespace eventlog
