#include "unified/collector.h"

#include <ctime>

#include "base/calendar.h"
#include "base/text.h"

namespace ostrell {

JsonOwner NewReportItem(const char* reportType, std::wstring_view name, int64_t timestamp) {
  JsonOwner item(json_object());
  json_object_set_new(item.Get(), "report_type", json_string(reportType));
  json_object_set_new(item.Get(), "name", json_string(Utf8FromWide(name).c_str()));
  json_object_set_new(item.Get(), "timestamp", json_integer(timestamp));
  return item;
}

int64_t LocalTimeSeconds(const Clock& clock, uint64_t utcTicks) {
  const SystemTime fields = SystemTimeFromTicks(clock.LocalTicks(utcTicks)).value_or(SystemTime{});
  std::tm calendar{};
  calendar.tm_sec = fields.second;
  calendar.tm_min = fields.minute;
  calendar.tm_hour = fields.hour;
  calendar.tm_mday = fields.day;
  calendar.tm_mon = fields.month - 1;
  calendar.tm_year = fields.year - 1900;
  calendar.tm_isdst = -1;
  return std::mktime(&calendar);
}

std::optional<std::wstring> FindProgramFolder(const Run& run, const char* operation,
                                              const FolderMessages& messages) {
  const auto program = run.files.ProgramPath();
  if (!program) {
    TraceLogger(run.traceLog, operation)(L"%s", messages.noPath);
    return std::nullopt;
  }
  const size_t slash = program->rfind(L'\\');
  if (slash == std::wstring::npos) {
    TraceLogger(run.traceLog, operation)(L"%s", messages.noFolder);
    return std::nullopt;
  }
  return program->substr(0, slash);
}

}  // namespace ostrell
