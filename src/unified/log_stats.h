#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/json.h"
#include "env/run.h"
#include "unified/log_matches.h"

namespace ostrell {

// Known failure signatures in the text logs that the product's components write beside the program.
// All times are seconds since 1970.

// The matching lines dated at or after `tmStart` as an array of items; nothing when there are none
// or the program's folder is unknown. A file that is missing, unreadable or unchanged since
// `tmStart` is skipped, the latter without opening it.
JsonOwner collect_log_stats(const Run& run, int64_t tmStart);

// Appends the lines of one file that contain `signature`, ASCII letters in any case, and begin with
// a time stamp at or after `tmStart`. Returns their number, 0 for a file that cannot be opened. The
// file is opened with full sharing: it may grow, be renamed or be deleted meanwhile. Holds a block
// of the file and the matches (log_scan.h).
int32_t collect_matching_entries(const Run& run, const std::wstring& path, const char* signature,
                                 int64_t tmStart, std::vector<LogMatch>& matches);

}  // namespace ostrell
