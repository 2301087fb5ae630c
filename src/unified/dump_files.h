#pragma once

#include <cstdint>
#include <string>

#include "base/json.h"

namespace ostrell {

// Crash dumps, "*.dmp", lie beside the program and in the folder above it. Their times are those of
// their last writing, dated as local_time_win.h says. All times are seconds since 1970. A folder
// that cannot be listed holds no dumps. Of one that holds more than the limit
// of dump_listing_win.h the first ones count, and the trace log says how many did not.

// The dumps written at or after `tmStart` as an array of items; nothing when there are none or the
// program's folder is unknown. A dump that cannot be parsed has no "pe-time".
JsonOwner collect_dump_files(int64_t tmStart);

// Reads the link time of the crashed program from a dump. 1 when the file is a minidump with a
// module list, else 0, also when a page of it cannot be read; `crashModuleTime` is set only when
// the list holds a program. What the limits of minidump.h leave out is said in the trace log. The
// name alone is opened, relative to the current directory: of a dump in the folder above this is
// another file or none.
int32_t GetCrashModuleFromDump(const std::wstring& fileName, uint32_t& crashModuleTime);

// Deletes the dumps beside the program that are more than thirty days older than `tmNow`, never
// those above. Returns how many.
int32_t cleanup_old_dump_files(int64_t tmNow);
int32_t cleanup_old_dump_files_in_directory(const std::wstring& directory, int64_t tmNow);

}  // namespace ostrell
