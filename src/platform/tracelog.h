#pragma once

#include <cstdint>
#include <string>
#include <type_traits>

#include "base/print.h"

namespace ostrell {

// The product's logging library, "tracelog.dll". Without it messages go nowhere.
struct TraceLogEntries {
  // Export "TraceLogWrite". `operation` is ASCII, `text` one message; both are terminated
  // and borrowed for the call. `line` is that of the source.
  void (*write)(const char* operation, int32_t line, int32_t level, const wchar_t* text);
};

class TraceLog {
 public:
  explicit TraceLog(const TraceLogEntries& resolved) : entries(resolved) {}

  void Write(const char* operation, int32_t line, int32_t level, const std::wstring& text) const {
    if (entries.write != nullptr) {
      entries.write(operation, line, level, text.c_str());
    }
  }

 private:
  TraceLogEntries entries;
};

// One message of an operation; it carries the line of the statement and the one level in use.
//
//   TraceLogger(run.traceLog, "post_unified_report")(L"Collected %u total items", count);
class TraceLogger {
 public:
  TraceLogger(const TraceLog& traceLog, const char* loggingOperation,
              int32_t sourceLine = __builtin_LINE())
      : log(traceLog), operation(loggingOperation), line(sourceLine) {}

  template <class... Args>
  void operator()(PrintFormat<wchar_t, std::type_identity_t<Args>...> format,
                  const Args&... args) const {
    log.Write(operation, line, kLevel, Print<Args...>(format, args...));
  }

 private:
  static constexpr int32_t kLevel = 1;

  const TraceLog& log;
  const char* operation;
  int32_t line;
};

}  // namespace ostrell
