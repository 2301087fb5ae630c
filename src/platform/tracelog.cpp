#include "platform/tracelog.h"

#include "platform/assumptions.h"
#include "platform/closed_library.h"

namespace ostrell {

void TraceLogger::Write(const std::wstring& text) const {
  using TraceLogWrite = void (*)(const char*, int32_t, int32_t, const wchar_t*);
  static const auto write =
      ClosedLibrary(L"tracelog.dll").ByName<TraceLogWrite>(assumed::kTraceLogExport);
  if (write != nullptr) {
    write(operation, line, level, text.c_str());
  }
}

}  // namespace ostrell
