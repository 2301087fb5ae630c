#include "unified/log_stats.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "base/text.h"
#include "unified/collector.h"
#include "unified/log_line.h"

namespace ostrell {
namespace {

constexpr auto kOperation = "collect_log_stats";

struct WatchedLog {
  const wchar_t* fileName;
  const char* signature;
};
constexpr std::array<WatchedLog, 2> kWatchedLogs = {{
    {L"protsvc.log", "0 failed"},                        // the protection service
    {L"qxupdate.exe.log", "StartService:: 0x00000005"},  // the update program
}};

// The lower-case form of the signature asked for last.
const std::string& LowerCaseSignature(const char* signature) {
  static std::string original;
  static std::string lowerCase;
  if (original != signature) {
    original = signature;
    lowerCase = original;
    std::ranges::transform(lowerCase, lowerCase.begin(), LowerAscii<char>);
  }
  return lowerCase;
}

// True when the log may hold lines of the period.
bool IsWorthReading(const Run& run, const std::wstring& path, int64_t tmStart) {
  const auto status = run.files.Status(path);
  if (!status) {
    TraceLogger(run.traceLog, kOperation)(L"File %s doesn't exist or inaccessible, skip", path);
    return false;
  }
  if (status->isDirectory) {
    TraceLogger(run.traceLog, kOperation)(L"%s is a directory, skip", path);
    return false;
  }
  const int64_t modified = LocalTimeSeconds(run.clock, status->lastWrite);
  if (modified < tmStart) {
    TraceLogger(run.traceLog, kOperation)(
        L"File %s modified time %lld earlier than start %lld, skip", path, modified, tmStart);
    return false;
  }
  return true;
}

JsonOwner ItemOf(const LogMatch& match, const WatchedLog& watched) {
  JsonOwner item = NewReportItem("log_stats", watched.fileName, match.time);
  json_object_set_new(item.Get(), "pattern", json_string(watched.signature));
  if (const auto peTime = PeTimeMarker(match.line)) {
    json_object_set_new(item.Get(), "pe-time", json_integer(*peTime));
  }
  return item;
}

void AppendItems(const Run& run, const WatchedLog& watched, const std::wstring& path,
                 int64_t tmStart, json_t* items) {
  TraceLogger(run.traceLog, kOperation)(L"Checking file: %s", path);
  if (!IsWorthReading(run, path, tmStart)) {
    return;
  }
  std::vector<LogMatch> matches;
  const int32_t count = collect_matching_entries(run, path, watched.signature, tmStart, matches);
  TraceLogger(run.traceLog, kOperation)(L"File %s: %d matches found", path, count);
  for (LogMatch& match : matches) {
    const LogMatch taken = std::move(match);  // its line goes when the item is made
    json_array_append_new(items, ItemOf(taken, watched).Release());
  }
}

}  // namespace

JsonOwner collect_log_stats(const Run& run, int64_t tmStart) {
  const auto folder = FindProgramFolder(run, kOperation, kCollectorFolderMessages);
  if (!folder) {
    return {};
  }
  TraceLogger(run.traceLog, kOperation)(L"Processing log files for unified collection: %s",
                                        *folder);
  JsonOwner items(json_array());
  for (const WatchedLog& watched : kWatchedLogs) {
    AppendItems(run, watched, *folder + L'\\' + watched.fileName, tmStart, items.Get());
  }
  const size_t count = json_array_size(items.Get());
  TraceLogger(run.traceLog, kOperation)(L"All files processed, total %d matching entries collected",
                                        count);
  if (count == 0) {
    TraceLogger(run.traceLog, kOperation)(L"No matching entries found, return NULL");
    return {};
  }
  return items;
}

int32_t collect_matching_entries(const Run& run, const std::wstring& path, const char* signature,
                                 int64_t tmStart, std::vector<LogMatch>& matches) {
  const auto file = run.files.Open(path, FileUse::kLog);
  if (!file) {
    TraceLogger(run.traceLog, "collect_matching_entries")(L"Failed to open file: %s", path);
    return 0;
  }
  const LogMatchCount count = CollectLogMatches(
      [&](uint64_t offset, std::span<char> to) {
        return file->ReadAt(offset, std::as_writable_bytes(to)).value_or(0);
      },
      LowerCaseSignature(signature), tmStart, matches);
  if (count.leftOut > 0 || count.cut > 0) {
    TraceLogger(run.traceLog, "collect_matching_entries")(
        L"Limits of file %s: left out %llu matches, the rest of %llu lines", path, count.leftOut,
        count.cut);
  }
  TraceLogger(run.traceLog, "collect_matching_entries")(L"File %s processed, found %d matches",
                                                        path, count.kept);
  return count.kept;
}

}  // namespace ostrell
