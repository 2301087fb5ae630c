#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/json.h"
#include "base/text.h"
#include "env/run.h"
#include "unified/minidump.h"

namespace ostrell {

// Crash dumps, "*.dmp", lie beside the program and in the folder above it. Their times are those of
// their last writing, dated by LocalTimeSeconds (collector.h). All times are seconds since 1970. A
// folder that cannot be listed holds no dumps. Of one that holds more than kMaxDumpsOfFolder the
// first ones count, and the trace log says how many did not.

inline constexpr size_t kMaxDumpsOfFolder = 65536;

// True for the name of a crash dump, one that ends in ".dmp", ASCII letters in any case. A listing
// of "*.dmp" holds other names, too, whose short form ends so: "memory.dmpbackup".
constexpr bool IsDumpName(std::wstring_view name) {
  constexpr std::wstring_view kEnding = L".dmp";
  return name.size() >= kEnding.size() &&
         std::ranges::equal(name.substr(name.size() - kEnding.size()), kEnding, {},
                            &LowerAscii<wchar_t>);
}

// The dumps written at or after `tmStart` as an array of items; nothing when there are none or the
// program's folder is unknown. A dump that cannot be parsed has no "pe-time".
JsonOwner collect_dump_files(const Run& run, int64_t tmStart);

// Reads the link time of the crashed program from a dump. 1 when the file is a minidump with a
// module list, else 0, also when a page of it cannot be read; `crashModuleTime` is set only when
// the list holds a program. What the limits of minidump.h leave out is said in the trace log. The
// name alone is opened, relative to the current directory: of a dump in the folder above this is
// another file or none.
int32_t GetCrashModuleFromDump(const Run& run, const std::wstring& fileName,
                               uint32_t& crashModuleTime);

// An open dump, which outlives the source. A page that cannot be read is a read that fails.
DumpSource SourceOf(const OpenFile& file);

// Deletes the dumps beside the program that are more than thirty days older than `tmNow`, never
// those above, and none whose time cannot be told. Returns how many.
int32_t cleanup_old_dump_files(const Run& run, int64_t tmNow);
int32_t cleanup_old_dump_files_in_directory(const Run& run, const std::wstring& directory,
                                            int64_t tmNow);

}  // namespace ostrell
