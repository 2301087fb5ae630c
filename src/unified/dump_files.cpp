#include "unified/dump_files.h"

#include <utility>
#include <vector>

#include "base/calendar.h"
#include "unified/collector.h"

namespace ostrell {
namespace {

constexpr int64_t kDay = 86400;
constexpr int64_t kKeepDumps = 30 * kDay;
constexpr FolderMessages kCleanupFolderMessages = {
    L"GetModuleFileNameW failed during cleanup, return 0",
    L"Failed to extract directory during cleanup, return 0"};

struct DumpFile {
  std::wstring name;  // without the folder
  int64_t time;       // of its last writing, as the unified report dates it
  int64_t written;    // the same in UTC
};

// The dumps of a folder in the order of the system's listing; says so when there are more than the
// limit.
std::vector<DumpFile> DumpsOf(const Run& run, const char* operation,
                              const std::wstring& directory) {
  std::vector<DumpFile> dumps;
  uint64_t leftOut = 0;
  run.files.List(directory, L"*.dmp", [&](const std::wstring& name, bool isDirectory) {
    // The pattern matches short names, too.
    if (isDirectory || !IsDumpName(name)) {
      return;
    }
    if (dumps.size() == kMaxDumpsOfFolder) {
      ++leftOut;
      return;
    }
    // The listing's own times can be stale while a file is open. It may have gone meanwhile.
    const auto status = run.files.Status(PathIn(directory, name));
    if (status && !status->isDirectory) {
      dumps.push_back({name, LocalTimeSeconds(run.clock, status->lastWrite),
                       SecondsFromTicks(status->lastWrite)});
    }
  });
  if (leftOut > 0) {
    TraceLogger(run.traceLog, operation)(L"Too many dump files in directory %s, %llu left out",
                                         directory, leftOut);
  }
  return dumps;
}

void AppendDumpsSince(const Run& run, int64_t tmStart, const std::wstring& directory,
                      std::vector<DumpFile>& found) {
  for (DumpFile& dump : DumpsOf(run, "collect_dump_files", directory)) {
    if (dump.time >= tmStart) {
      found.push_back(std::move(dump));
    }
  }
}

JsonOwner ItemOf(const Run& run, const DumpFile& dump) {
  JsonOwner item = NewReportItem("dmp_files", dump.name, dump.time);
  uint32_t crashModuleTime = 0;
  if (GetCrashModuleFromDump(run, dump.name, crashModuleTime) == 1) {
    json_object_set_new(item.Get(), "pe-time", json_integer(crashModuleTime));
  }
  return item;
}

}  // namespace

DumpSource SourceOf(const OpenFile& file) {
  return {file.Size().value_or(0), [&file](uint64_t offset, std::span<std::byte> to) {
            return ReadExactly(file, offset, to);
          }};
}

JsonOwner collect_dump_files(const Run& run, int64_t tmStart) {
  const auto folder = FindProgramFolder(run, "collect_dump_files", kCollectorFolderMessages);
  if (!folder) {
    return {};
  }
  TraceLogger(run.traceLog, "collect_dump_files")(L"Scanning for dump files in directory: %s",
                                                  *folder);
  std::vector<DumpFile> dumps;
  AppendDumpsSince(run, tmStart, *folder, dumps);
  size_t count = dumps.size();
  AppendDumpsSince(run, tmStart, *folder + L"\\..", dumps);
  count += dumps.size();  // counts those beside the program twice
  TraceLogger(run.traceLog, "collect_dump_files")(
      L"Scan completed, found %d dump files within time range", count);
  if (count == 0) {
    TraceLogger(run.traceLog, "collect_dump_files")(L"No dump files to collect");
    return {};
  }
  JsonOwner items(json_array());
  for (const DumpFile& dump : dumps) {
    json_array_append_new(items.Get(), ItemOf(run, dump).Release());
  }
  return items;
}

int32_t GetCrashModuleFromDump(const Run& run, const std::wstring& fileName,
                               uint32_t& crashModuleTime) {
  uint32_t error = 0;
  const auto file = run.files.Open(fileName, FileUse::kMapped, &error);
  if (!file) {
    TraceLogger(run.traceLog, "GetCrashModuleFromDump")(L"Failed to map dump file %s, error=%u",
                                                        fileName, error);
    return 0;
  }
  const DumpReading dump = ReadMinidump(SourceOf(*file));
  if (dump.leftOut != DumpLeftOut()) {
    TraceLogger(run.traceLog, "GetCrashModuleFromDump")(
        L"Limits of dump file %s: left out %llu streams, %llu modules, the rest of %llu names",
        fileName, dump.leftOut.streams, dump.leftOut.modules, dump.leftOut.names);
  }
  if (dump.kind == DumpKind::kForeign) {
    return 0;
  }
  if (dump.kind == DumpKind::kNoModuleList) {
    TraceLogger(run.traceLog, "GetCrashModuleFromDump")(L"No module list found in dump file %s",
                                                        fileName);
    return 0;
  }
  crashModuleTime = dump.crashModuleTime.value_or(crashModuleTime);
  TraceLogger(run.traceLog, "GetCrashModuleFromDump")(
      L"Successfully parsed crash module from dump file %s", fileName);
  return 1;
}

int32_t cleanup_old_dump_files(const Run& run, int64_t tmNow) {
  const auto folder = FindProgramFolder(run, "cleanup_old_dump_files", kCleanupFolderMessages);
  return folder ? cleanup_old_dump_files_in_directory(run, *folder, tmNow) : 0;
}

int32_t cleanup_old_dump_files_in_directory(const Run& run, const std::wstring& directory,
                                            int64_t tmNow) {
  const int64_t cutOff = WrappingDifference(tmNow, kKeepDumps);
  int32_t deleted = 0;
  for (const DumpFile& dump : DumpsOf(run, "cleanup_old_dump_files_in_directory", directory)) {
    // A time that could not be made local looks old.
    const bool isOld = dump.time < cutOff && dump.written < cutOff + kDay;
    if (isOld && run.files.Delete(PathIn(directory, dump.name))) {
      ++deleted;
    }
  }
  TraceLogger(run.traceLog, "cleanup_old_dump_files_in_directory")(
      L"Cleanup completed, deleted %d old dump files", deleted);
  return deleted;
}

}  // namespace ostrell
