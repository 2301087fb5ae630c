#include "unified/log_line.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>

namespace ostrell {
namespace {

constexpr std::string_view kPeTimeMarker = "<pe-time:";

}  // namespace

std::optional<int64_t> LogLineTime(const std::string& line) {
  std::tm time{};
  char separators[2];
  if (std::sscanf(line.c_str(), "[%04d%c%02d%c%02d %02d:%02d:%02d", &time.tm_year, &separators[0],
                  &time.tm_mon, &separators[1], &time.tm_mday, &time.tm_hour, &time.tm_min,
                  &time.tm_sec) != 8) {
    return std::nullopt;
  }
  time.tm_year -= 1900;
  time.tm_mon -= 1;
  time.tm_isdst = -1;
  return std::mktime(&time);
}

std::optional<int64_t> PeTimeMarker(const std::string& line) {
  const size_t marker = line.find(kPeTimeMarker);
  if (marker == std::string::npos) {
    return std::nullopt;
  }
  const size_t begin = marker + kPeTimeMarker.size();
  if (line.find('>', begin) == std::string::npos) {
    return std::nullopt;
  }
  // The bracket is no part of a number, so reading ends there at the latest. Without a number the
  // result is 0, too.
  const int64_t time = std::strtoll(line.c_str() + begin, nullptr, 10);
  return time == 0 ? std::nullopt : std::optional(time);
}

}  // namespace ostrell
