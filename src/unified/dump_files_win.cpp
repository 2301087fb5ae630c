#include <windows.h>

#include <utility>
#include <vector>

#include "base/arithmetic.h"
#include "base/mapped_file_win.h"
#include "platform/tracelog.h"
#include "unified/dump_files.h"
#include "unified/local_time_win.h"
#include "unified/minidump.h"
#include "unified/program_folder_win.h"
#include "unified/report_item.h"

namespace ostrell {
namespace {

constexpr int64_t kKeepDumps = 2592000;  // thirty days
constexpr FolderMessages kCleanupFolderMessages = {
    L"GetModuleFileNameW failed during cleanup, return 0",
    L"Failed to extract directory during cleanup, return 0"};

struct FindHandleTraits {
  using Handle = HANDLE;
  static Handle Empty() { return INVALID_HANDLE_VALUE; }
  static void Close(Handle handle) noexcept { FindClose(handle); }
};

struct DumpFile {
  std::wstring name;  // without the folder
  int64_t time;
};

std::wstring PathIn(const std::wstring& directory, const wchar_t* name) {
  return directory.ends_with(L'\\') ? directory + name : directory + L'\\' + name;
}

bool IsDirectory(DWORD attributes) {
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::vector<DumpFile> ListDumps(const std::wstring& directory) {
  std::vector<DumpFile> dumps;
  WIN32_FIND_DATAW entry;
  const Owner<FindHandleTraits> listing(FindFirstFileExW(PathIn(directory, L"*.dmp").c_str(),
                                                         FindExInfoStandard, &entry,
                                                         FindExSearchNameMatch, nullptr, 0));
  for (bool found = static_cast<bool>(listing); found;
       found = FindNextFileW(listing.Get(), &entry) != 0) {
    // The listing's own times can be stale while a file is open.
    WIN32_FILE_ATTRIBUTE_DATA attributes;
    if (!IsDirectory(entry.dwFileAttributes) &&
        GetFileAttributesExW(PathIn(directory, entry.cFileName).c_str(), GetFileExInfoStandard,
                             &attributes) != 0 &&
        !IsDirectory(attributes.dwFileAttributes)) {
      dumps.push_back({entry.cFileName, LocalTimeSeconds(attributes.ftLastWriteTime)});
    }
  }
  return dumps;
}

void AppendDumpsSince(int64_t tmStart, const std::wstring& directory,
                      std::vector<DumpFile>& found) {
  for (DumpFile& dump : ListDumps(directory)) {
    if (dump.time >= tmStart) {
      found.push_back(std::move(dump));
    }
  }
}

JsonOwner ItemOf(const DumpFile& dump) {
  JsonOwner item = NewReportItem("dmp_files", dump.name, dump.time);
  uint32_t crashModuleTime = 0;
  if (GetCrashModuleFromDump(dump.name, crashModuleTime) == 1) {
    json_object_set_new(item.Get(), "pe-time", json_integer(crashModuleTime));
  }
  return item;
}

}  // namespace

JsonOwner collect_dump_files(int64_t tmStart) {
  const auto folder = FindProgramFolder("collect_dump_files", kCollectorFolderMessages);
  if (!folder) {
    return {};
  }
  TraceLogger("collect_dump_files", __LINE__, 1)(L"Scanning for dump files in directory: %s",
                                                 *folder);
  std::vector<DumpFile> dumps;
  AppendDumpsSince(tmStart, *folder, dumps);
  size_t count = dumps.size();
  AppendDumpsSince(tmStart, *folder + L"\\..", dumps);
  count += dumps.size();  // counts those beside the program twice
  TraceLogger("collect_dump_files", __LINE__, 1)(
      L"Scan completed, found %d dump files within time range", count);
  if (count == 0) {
    TraceLogger("collect_dump_files", __LINE__, 1)(L"No dump files to collect");
    return {};
  }
  JsonOwner items(json_array());
  for (const DumpFile& dump : dumps) {
    json_array_append_new(items.Get(), ItemOf(dump).Release());
  }
  return items;
}

int32_t GetCrashModuleFromDump(const std::wstring& fileName, uint32_t& crashModuleTime) {
  const MappedFile file(fileName.c_str());
  if (file.Error() != ERROR_SUCCESS) {
    TraceLogger("GetCrashModuleFromDump", __LINE__, 1)(L"Failed to map dump file %s, error=%u",
                                                       fileName, file.Error());
    return 0;
  }
  const DumpReading dump = ReadMinidump(file.Bytes());
  if (dump.kind == DumpKind::kForeign) {
    return 0;
  }
  if (dump.kind == DumpKind::kNoModuleList) {
    TraceLogger("GetCrashModuleFromDump", __LINE__, 1)(L"No module list found in dump file %s",
                                                       fileName);
    return 0;
  }
  crashModuleTime = dump.crashModuleTime.value_or(crashModuleTime);
  TraceLogger("GetCrashModuleFromDump", __LINE__, 1)(
      L"Successfully parsed crash module from dump file %s", fileName);
  return 1;
}

int32_t cleanup_old_dump_files(int64_t tmNow) {
  const auto folder = FindProgramFolder("cleanup_old_dump_files", kCleanupFolderMessages);
  return folder ? cleanup_old_dump_files_in_directory(*folder, tmNow) : 0;
}

int32_t cleanup_old_dump_files_in_directory(const std::wstring& directory, int64_t tmNow) {
  const int64_t cutOff = WrappingDifference(tmNow, kKeepDumps);
  int32_t deleted = 0;
  for (const DumpFile& dump : ListDumps(directory)) {
    if (dump.time < cutOff && DeleteFileW(PathIn(directory, dump.name.c_str()).c_str()) != 0) {
      ++deleted;
    }
  }
  TraceLogger("cleanup_old_dump_files_in_directory", __LINE__, 1)(
      L"Cleanup completed, deleted %d old dump files", deleted);
  return deleted;
}

}  // namespace ostrell
