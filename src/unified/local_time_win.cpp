#include "unified/local_time_win.h"

#include <ctime>

namespace ostrell {

int64_t LocalTimeSeconds(const FILETIME& utc) {
  FILETIME local{};
  SYSTEMTIME fields{};
  FileTimeToLocalFileTime(&utc, &local);
  FileTimeToSystemTime(&local, &fields);
  std::tm calendar{};
  calendar.tm_sec = fields.wSecond;
  calendar.tm_min = fields.wMinute;
  calendar.tm_hour = fields.wHour;
  calendar.tm_mday = fields.wDay;
  calendar.tm_mon = fields.wMonth - 1;
  calendar.tm_year = fields.wYear - 1900;
  calendar.tm_isdst = -1;
  return std::mktime(&calendar);
}

}  // namespace ostrell
