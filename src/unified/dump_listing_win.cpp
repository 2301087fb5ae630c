#include "unified/dump_listing_win.h"

#include <windows.h>

#include "base/owner.h"
#include "unified/dump_name.h"
#include "unified/local_time_win.h"

namespace ostrell {
namespace {

struct FindHandleTraits {
  using Handle = HANDLE;
  static Handle Empty() { return INVALID_HANDLE_VALUE; }
  static void Close(Handle handle) noexcept { FindClose(handle); }
};

bool IsDirectory(DWORD attributes) {
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Adds the dump unless it has gone meanwhile.
void Append(const std::wstring& directory, const wchar_t* name, std::vector<DumpFile>& dumps) {
  // The listing's own times can be stale while a file is open.
  WIN32_FILE_ATTRIBUTE_DATA attributes;
  if (GetFileAttributesExW(PathIn(directory, name).c_str(), GetFileExInfoStandard, &attributes) !=
          0 &&
      !IsDirectory(attributes.dwFileAttributes)) {
    dumps.push_back({name, LocalTimeSeconds(attributes.ftLastWriteTime)});
  }
}

}  // namespace

std::wstring PathIn(const std::wstring& directory, const wchar_t* name) {
  return directory.ends_with(L'\\') ? directory + name : directory + L'\\' + name;
}

DumpListing ListDumps(const std::wstring& directory, size_t most) {
  DumpListing found;
  WIN32_FIND_DATAW entry;
  const Owner<FindHandleTraits> listing(FindFirstFileExW(PathIn(directory, L"*.dmp").c_str(),
                                                         FindExInfoStandard, &entry,
                                                         FindExSearchNameMatch, nullptr, 0));
  for (bool isEntry = static_cast<bool>(listing); isEntry;
       isEntry = FindNextFileW(listing.Get(), &entry) != 0) {
    // The pattern matches short names, too.
    if (IsDirectory(entry.dwFileAttributes) || !IsDumpName(entry.cFileName)) {
      continue;
    }
    if (found.dumps.size() < most) {
      Append(directory, entry.cFileName, found.dumps);
    } else {
      ++found.leftOut;
    }
  }
  return found;
}

}  // namespace ostrell
