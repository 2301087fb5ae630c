#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "unified/log_scan.h"

namespace ostrell {

// The matching lines of one log that are dated in a period.

struct LogMatch {
  int64_t time;      // seconds since 1970
  std::string line;  // as read, without its end; no more of it than log_scan.h keeps
};

inline constexpr size_t kMaxLogMatches = 65536;                // of one log
inline constexpr size_t kMaxLogMatchBytes = size_t{64} << 20;  // of their lines together

struct LogMatchCount {
  int32_t kept = 0;
  uint64_t leftOut = 0;  // further matches, from the first one on that a limit has no room for
  uint64_t cut = 0;      // kept ones of which only the beginning is

  bool operator==(const LogMatchCount&) const = default;
};

// Appends the lines with the signature (log_scan.h) that begin with a time stamp at or after
// `tmStart`, in file order and up to the limits. The whole log is read in any case.
LogMatchCount CollectLogMatches(const LogReader& read, std::string_view signature, int64_t tmStart,
                                std::vector<LogMatch>& matches);

}  // namespace ostrell
