// Stand-in for the product's pop-up blocker: popblock DATABASE [once]
//
// Makes the pop-up block database where it is missing, with entries of the last days; says "ready"
// and logs one more entry every 5 ms, as the blocker does while the agent reads. Ends with 0 once
// there is a file DATABASE.stop, which it deletes, or after a minute; with "once" after
// the first of these. Ends with 1, and a line that says why, when the database cannot be written.
#include <windows.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "base/print.h"
#include "store/connection.h"
#include "store/statement.h"

namespace ostrell {
namespace {

constexpr int64_t kMinute = 60;  // seconds

// Whoever reads the database compares the schema with this text, byte for byte.
constexpr char kSchema[] =
    "CREATE TABLE BlockItemLog(id INTEGER PRIMARY KEY AUTOINCREMENT, ts INTEGER, detail TEXT,iname "
    "Text);"
    "CREATE INDEX idx_BlockItemLog_ts_group_item ON BlockItemLog(ts);";

struct Entry {
  int64_t minutesAgo;
  const char* detail;
  const char* item;
};

// Entries that a report tells apart, entries that it does not, some that it cannot use, and one
// older than the seven days that it covers.
constexpr Entry kFirstEntries[] = {
    {10090, R"({"product_name":"popblock","gname":"adverts","iname":"old.example"})",
     "old.example"},
    {4320, R"({"product_name":"popblock","gname":"adverts","iname":"banner.example"})",
     "banner.example"},
    {2880, R"({"product_name":"popblock","gname":"trackers","iname":"banner.example"})",
     "banner.example"},
    {1500, R"({"product_name":"softmanager","action":"uninstall","app":"Toolbar"})", "Toolbar"},
    {1440, R"({"product_name":"softmanager","action":"disable","app":"Helper"})", "Helper"},
    {600, R"({"product_name":"deskhelper","gname":"tips","iname":"tip 12"})", "tip 12"},
    {300, R"({"gname":"adverts","iname":"nobody.example"})", "nobody.example"},
    {240, "blocked popup.example", "popup.example"},
    {90, R"({"product_name":"popblock","gname":"adverts","iname":"banner.example","count":3})",
     "banner.example"},
    {60, R"({"product_name":"popblock","gname":"adverts","iname":"popup.example"})",
     "popup.example"},
    {30, R"({"product_name":"popblock"})", ""},
};

int64_t Now() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::seconds>(now).count();
}

class BlockLog {
 public:
  // Gives up, and then says so, unless the database is open and has its table.
  explicit BlockLog(const wchar_t* path) {
    constexpr int kMaxWaiting = 10000;  // milliseconds
    isSound = sqlite3_open16(path, database.Receive()) == SQLITE_OK &&
              sqlite3_busy_timeout(database.Get(), kMaxWaiting) == SQLITE_OK &&
              Run("PRAGMA journal_mode=WAL") &&
              (HasTable() ||
               (Run("BEGIN IMMEDIATE") && Run(kSchema) && LogFirstEntries() && Run("COMMIT")));
  }

  bool IsSound() const { return isSound; }
  const char* Error() const { return sqlite3_errmsg(database.Get()); }

  bool Log(int64_t time, std::string_view detail, std::string_view item) {
    constexpr char kInsert[] = "INSERT INTO BlockItemLog(ts, detail, iname) VALUES(?, ?, ?)";
    return ExecBound(database.Get(), kInsert, -1, "Iss",
                     {time, detail.data(), static_cast<int32_t>(detail.size()), item.data(),
                      static_cast<int32_t>(item.size())}) == 1;
  }

 private:
  bool Run(const char* sql) {
    return sqlite3_exec(database.Get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK;
  }

  bool HasTable() {
    const Statement look =
        Prepare(database.Get(), "SELECT 1 FROM sqlite_master WHERE name='BlockItemLog'");
    return sqlite3_step(look.Get()) == SQLITE_ROW;
  }

  bool LogFirstEntries() {
    const int64_t now = Now();
    for (const auto& [minutesAgo, detail, item] : kFirstEntries) {
      if (!Log(now - minutesAgo * kMinute, detail, item)) {
        return false;
      }
    }
    return true;
  }

  Connection database;
  bool isSound = false;
};

bool LogLiveEntry(BlockLog& log, int count) {
  const std::string item = Print("live %d", count);
  return log.Log(Now(), Print(R"({"product_name":"popblock","gname":"live","iname":"%s"})", item),
                 item);
}

bool LogUntilStopped(BlockLog& log, const wchar_t* stopFile) {
  constexpr DWORD kPause = 5;  // milliseconds
  const int64_t end = Now() + kMinute;
  for (int count = 1; Now() < end && !DeleteFileW(stopFile); ++count) {
    if (!LogLiveEntry(log, count)) {
      return false;
    }
    Sleep(kPause);
  }
  return true;
}

int Fail(const BlockLog& log) {
  std::fprintf(stderr, "popblock: %s\n", log.Error());
  return 1;
}

int Block(const wchar_t* path, bool isOnce) {
  const std::wstring stopFile = std::wstring(path) + L".stop";
  DeleteFileW(stopFile.c_str());  // of an earlier run
  BlockLog log(path);
  if (!log.IsSound()) {
    return Fail(log);
  }
  std::puts("ready");
  std::fflush(stdout);
  const bool isLogged = isOnce ? LogLiveEntry(log, 1) : LogUntilStopped(log, stopFile.c_str());
  return isLogged ? 0 : Fail(log);
}

}  // namespace
}  // namespace ostrell

int wmain(int argc, wchar_t** argv) {
  const bool isOnce = argc == 3 && std::wstring_view(argv[2]) == L"once";
  if (argc != 2 && !isOnce) {
    std::fputs("usage: popblock DATABASE [once]\n", stderr);
    return 2;
  }
  return ostrell::Block(argv[1], isOnce);
}
