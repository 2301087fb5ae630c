#include <windows.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "base/handle_win.h"
#include "base/text.h"
#include "platform/tracelog.h"
#include "unified/local_time_win.h"
#include "unified/log_line.h"
#include "unified/log_stats.h"
#include "unified/program_folder_win.h"
#include "unified/report_item.h"

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

size_t ReadAt(HANDLE file, uint64_t offset, std::span<char> to) {
  OVERLAPPED position{};
  position.Offset = static_cast<DWORD>(offset);
  position.OffsetHigh = static_cast<DWORD>(offset >> 32);
  DWORD taken = 0;
  const auto size = static_cast<DWORD>(to.size());  // of a block
  return ReadFile(file, to.data(), size, &taken, &position) != 0 ? taken : 0;
}

// True when the log may hold lines of the period.
bool IsWorthReading(const std::wstring& path, int64_t tmStart) {
  WIN32_FILE_ATTRIBUTE_DATA attributes;
  if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &attributes) == 0) {
    TraceLogger(kOperation, __LINE__, 1)(L"File %s doesn't exist or inaccessible, skip", path);
    return false;
  }
  if ((attributes.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    TraceLogger(kOperation, __LINE__, 1)(L"%s is a directory, skip", path);
    return false;
  }
  const int64_t modified = LocalTimeSeconds(attributes.ftLastWriteTime);
  if (modified < tmStart) {
    TraceLogger(kOperation, __LINE__, 1)(
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

void AppendItems(const WatchedLog& watched, const std::wstring& path, int64_t tmStart,
                 json_t* items) {
  TraceLogger(kOperation, __LINE__, 1)(L"Checking file: %s", path);
  if (!IsWorthReading(path, tmStart)) {
    return;
  }
  std::vector<LogMatch> matches;
  const int32_t count = collect_matching_entries(path, watched.signature, tmStart, matches);
  TraceLogger(kOperation, __LINE__, 1)(L"File %s: %d matches found", path, count);
  for (LogMatch& match : matches) {
    const LogMatch taken = std::move(match);  // its line goes when the item is made
    json_array_append_new(items, ItemOf(taken, watched).Release());
  }
}

}  // namespace

JsonOwner collect_log_stats(int64_t tmStart) {
  const auto folder = FindProgramFolder(kOperation, kCollectorFolderMessages);
  if (!folder) {
    return {};
  }
  TraceLogger(kOperation, __LINE__, 1)(L"Processing log files for unified collection: %s", *folder);
  JsonOwner items(json_array());
  for (const WatchedLog& watched : kWatchedLogs) {
    AppendItems(watched, *folder + L'\\' + watched.fileName, tmStart, items.Get());
  }
  const size_t count = json_array_size(items.Get());
  TraceLogger(kOperation, __LINE__, 1)(L"All files processed, total %d matching entries collected",
                                       count);
  if (count == 0) {
    TraceLogger(kOperation, __LINE__, 1)(L"No matching entries found, return NULL");
    return {};
  }
  return items;
}

int32_t collect_matching_entries(const std::wstring& path, const char* signature, int64_t tmStart,
                                 std::vector<LogMatch>& matches) {
  const FileHandle file(CreateFileW(path.c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  if (!file) {
    TraceLogger("collect_matching_entries", __LINE__, 1)(L"Failed to open file: %s", path);
    return 0;
  }
  const LogMatchCount count = CollectLogMatches(
      [&](uint64_t offset, std::span<char> to) { return ReadAt(file.Get(), offset, to); },
      LowerCaseSignature(signature), tmStart, matches);
  if (count.leftOut > 0 || count.cut > 0) {
    TraceLogger("collect_matching_entries", __LINE__, 1)(
        L"Limits of file %s: left out %llu matches, the rest of %llu lines", path, count.leftOut,
        count.cut);
  }
  TraceLogger("collect_matching_entries", __LINE__, 1)(L"File %s processed, found %d matches", path,
                                                       count.kept);
  return count.kept;
}

}  // namespace ostrell
