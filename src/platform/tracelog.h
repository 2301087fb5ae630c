#pragma once

#include <cstdint>
#include <string>

#include "base/print.h"

namespace ostrell {

// One message to the product's logging library, "tracelog.dll"; without it messages go nowhere.
//
//   TraceLogger("post_unified_report", __LINE__, 1)(L"Collected %u total items", count);
class TraceLogger {
 public:
  // The operation that logs, the line of the statement and the level.
  TraceLogger(const char* loggingOperation, int32_t sourceLine, int32_t logLevel)
      : operation(loggingOperation), line(sourceLine), level(logLevel) {}

  // A wide printf-style format (base/print.h) and its arguments.
  template <class... Args>
  void operator()(const wchar_t* format, const Args&... args) const {
    Write(Print(std::wstring_view(format), args...));
  }

 private:
  void Write(const std::wstring& text) const;

  const char* operation;
  int32_t line;
  int32_t level;
};

}  // namespace ostrell
