#include <windows.h>

#include <utility>
#include <vector>

#include "base/arithmetic.h"
#include "base/mapped_file_win.h"
#include "platform/tracelog.h"
#include "unified/dump_files.h"
#include "unified/dump_listing_win.h"
#include "unified/dump_view_win.h"
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

// The dumps of a folder; says so when there are more than the limit.
std::vector<DumpFile> DumpsOf(const char* operation, const std::wstring& directory) {
  DumpListing listing = ListDumps(directory);
  if (listing.leftOut > 0) {
    TraceLogger(operation, __LINE__, 1)(L"Too many dump files in directory %s, %llu left out",
                                        directory, listing.leftOut);
  }
  return std::move(listing.dumps);
}

void AppendDumpsSince(int64_t tmStart, const std::wstring& directory,
                      std::vector<DumpFile>& found) {
  for (DumpFile& dump : DumpsOf("collect_dump_files", directory)) {
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
  const DumpReading dump = ReadMinidump(SourceOfView(file.Bytes()));
  if (dump.leftOut != DumpLeftOut()) {
    TraceLogger("GetCrashModuleFromDump", __LINE__, 1)(
        L"Limits of dump file %s: left out %llu streams, %llu modules, the rest of %llu names",
        fileName, dump.leftOut.streams, dump.leftOut.modules, dump.leftOut.names);
  }
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
  for (const DumpFile& dump : DumpsOf("cleanup_old_dump_files_in_directory", directory)) {
    if (dump.time < cutOff && DeleteFileW(PathIn(directory, dump.name.c_str()).c_str()) != 0) {
      ++deleted;
    }
  }
  TraceLogger("cleanup_old_dump_files_in_directory", __LINE__, 1)(
      L"Cleanup completed, deleted %d old dump files", deleted);
  return deleted;
}

}  // namespace ostrell
