#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ostrell {

// What a matching log line says. A line is narrow text without its line end; a NUL in it ends what
// these functions look at where they read numbers.

// The time of "[2025-03-01 10:00:00" at the start of the line, local time, in seconds since 1970 as
// mktime gives it (-1 where it gives up). By scanf's rules: any single character separates year,
// month and day, any amount of white space, none included, date and time. Nothing unless all fields
// can be read.
std::optional<int64_t> LogLineTime(const std::string& line);

// The number in the first "<pe-time:1712345678>"; decimal by strtoll's rules, so it may end before
// the bracket, and saturates. Nothing without a bracket behind it, without a number, or for 0.
std::optional<int64_t> PeTimeMarker(const std::string& line);

}  // namespace ostrell
