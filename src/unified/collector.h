#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/json.h"
#include "env/run.h"

// What the three collectors of the unified report share.

namespace ostrell {

// A new item of the unified report with the members that every item begins with, in their order:
// "report_type", "name" and "timestamp" (seconds since 1970). `name` is converted to UTF-8.
JsonOwner NewReportItem(const char* reportType, std::wstring_view name, int64_t timestamp);

// How the unified report dates files and events: the time, ticks (calendar.h) in UTC, is made local
// with the offset of today, broken down, and made seconds since 1970 again with the offset that
// holds at that date (mktime). So a time on the other side of a daylight-saving change is off by
// the difference. -1 where mktime gives up.
int64_t LocalTimeSeconds(const Clock& clock, uint64_t utcTicks);

// What an operation logs when it cannot find the program's folder.
struct FolderMessages {
  const wchar_t* noPath;
  const wchar_t* noFolder;
};

inline constexpr FolderMessages kCollectorFolderMessages = {
    L"GetModuleFileNameW failed, return NULL",
    L"Failed to extract directory from module path, return NULL"};

// The folder of the running program without a backslash at its end. On failure logs one of the
// messages under `operation`.
std::optional<std::wstring> FindProgramFolder(const Run& run, const char* operation,
                                              const FolderMessages& messages);

}  // namespace ostrell
