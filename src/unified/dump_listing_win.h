#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ostrell {

struct DumpFile {
  std::wstring name;  // without the folder
  int64_t time;       // of its last writing, as local_time_win.h dates it
};

struct DumpListing {
  std::vector<DumpFile> dumps;  // in the order of the system's listing
  uint64_t leftOut = 0;         // further ones, of which only the names were seen
};

inline constexpr size_t kMostDumpsOfFolder = 65536;

// The first `most` crash dumps of a folder: its entries that are files and dumps by name
// (dump_name.h). None of a folder that cannot be listed.
DumpListing ListDumps(const std::wstring& directory, size_t most = kMostDumpsOfFolder);

// The path of an entry of a folder, which may end in a backslash.
std::wstring PathIn(const std::wstring& directory, const wchar_t* name);

}  // namespace ostrell
