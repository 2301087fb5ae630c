#include "store/guarded_vfs.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "base/text.h"
#include "store/record_store.h"
#include "store/schema.h"
#include "store/statement.h"

namespace ostrell {
namespace {

namespace fs = std::filesystem;

constexpr char kOneRow[] = R"([{"id":1,"ts":5,"detail":[]}])";

// What the system's VFS was asked about: the names behind the folder.
std::set<std::string> asked;
sqlite3_vfs* systemVfs = nullptr;

void Note(const char* file) {
  asked.insert(file == nullptr ? "temporary" : fs::path(file).filename().string());
}

sqlite3_vfs WatchingVfs() {
  systemVfs = sqlite3_vfs_find(nullptr);
  asked.clear();
  sqlite3_vfs vfs = *systemVfs;
  vfs.zName = "watching";
  vfs.xOpen = [](sqlite3_vfs*, const char* file, sqlite3_file* opened, int flags, int* then) {
    Note(file);
    return systemVfs->xOpen(systemVfs, file, opened, flags, then);
  };
  vfs.xDelete = [](sqlite3_vfs*, const char* file, int sync) {
    Note(file);
    return systemVfs->xDelete(systemVfs, file, sync);
  };
  vfs.xAccess = [](sqlite3_vfs*, const char* file, int flags, int* result) {
    Note(file);
    return systemVfs->xAccess(systemVfs, file, flags, result);
  };
  return vfs;
}

// Long enough for a look at the clock.
constexpr char kLongQuery[] =
    "WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i+1 FROM n LIMIT 1000) "
    "SELECT count(*) FROM n";

int64_t now = 0;

class GuardedVfsTest : public testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(folder);
    now = 0;
    path = Utf8FromWide((folder / "items.db").wstring());
    ASSERT_EQ(Open(), "");
    ASSERT_EQ(
        ExecBound(store.Get(), "INSERT INTO BlockItemLog(ts,detail) VALUES(5,'[]')", -1, "", {}),
        1);
  }
  void TearDown() override {
    CloseRecordStore(store);
    fs::remove_all(folder);
  }

  // The rows.
  std::string Open(MonotonicClock clock = SteadyMilliseconds) {
    EXPECT_EQ(OpenRecordStore(path.c_str(), store, 1, clock), 1);
    schema = EnsureSchema(store.Get());
    return CompactText(FetchBlockItems(store, nullptr));
  }

  int Execute(const char* sql) { return sqlite3_exec(store.Get(), sql, nullptr, nullptr, nullptr); }

  const fs::path folder =
      fs::temp_directory_path() / ("ostrell_guard_" + std::to_string(std::random_device()()));
  std::string path;
  Connection store;
  int schema = 0;
};

// A journal that names a file as the one which lists all journals of a transaction: SQLite deletes
// that file once none of the journals it lists is there.
std::string JournalNaming(std::string_view file) {
  const auto number = [](uint32_t value) {
    return std::string{static_cast<char>(value >> 24), static_cast<char>(value >> 16),
                       static_cast<char>(value >> 8), static_cast<char>(value)};
  };
  const std::string magic = "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7";
  uint32_t sum = 0;
  for (const char character : file) {
    sum += static_cast<uint32_t>(character);
  }
  std::string journal =
      magic + number(0) + number(0) + number(4) + number(512) + number(4096);  // no page
  journal.resize(512);
  return journal + number(0x40000000 / 4096 + 1) + std::string(file) +
         number(static_cast<uint32_t>(file.size())) + number(sum) + magic;
}

TEST_F(GuardedVfsTest, JournalThatNamesAnotherFile) {
  CloseRecordStore(store);
  const fs::path victim = folder / "victim";
  const fs::path journal = folder / "items.db-journal";
  std::ofstream(victim) << "keep";
  std::ofstream(journal, std::ios::binary) << JournalNaming(Utf8FromWide(victim.wstring()));
  const auto journalSize = fs::file_size(journal);
  sqlite3_vfs watching = WatchingVfs();
  ASSERT_EQ(sqlite3_vfs_register(&watching, 1), SQLITE_OK);
  EXPECT_EQ(Open(), "");
  EXPECT_EQ(schema, 0);
  CloseRecordStore(store);
  sqlite3_vfs_unregister(&watching);
  EXPECT_EQ(asked, (std::set<std::string>{"items.db", "items.db-journal"}));
  EXPECT_TRUE(fs::exists(victim));
  ASSERT_EQ(fs::file_size(journal), journalSize);
  fs::remove(journal);
  EXPECT_EQ(Open(), kOneRow);
}

TEST_F(GuardedVfsTest, OtherFiles) {
  sqlite3_vfs watching = WatchingVfs();
  ASSERT_EQ(sqlite3_vfs_register(&watching, 1), SQLITE_OK);
  EXPECT_EQ(Open(), kOneRow);
  const std::string other =
      "ATTACH '" + Utf8FromWide((folder / "other.db").wstring()) + "' AS other";
  EXPECT_EQ(Execute(other.c_str()), SQLITE_ERROR);
  sqlite3_limit(store.Get(), SQLITE_LIMIT_ATTACHED, 10);
  EXPECT_EQ(Execute(other.c_str()), SQLITE_ERROR);
  // Sorting and a statement that may have to be undone, both larger than what stays in a cache.
  EXPECT_EQ(Execute("CREATE TABLE big(x); INSERT INTO big SELECT randomblob(2000) FROM "
                    "(WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i+1 FROM n LIMIT 4000) "
                    "SELECT i FROM n); CREATE INDEX bigger ON big(x); DROP TABLE big;"),
            SQLITE_OK);
  EXPECT_NE(Execute("VACUUM"), SQLITE_OK);
  EXPECT_EQ(Execute("PRAGMA journal_mode=DELETE; DELETE FROM BlockItemLog"), SQLITE_OK);
  CloseRecordStore(store);
  sqlite3_vfs_unregister(&watching);
  EXPECT_EQ(asked, (std::set<std::string>{"items.db", "items.db-journal", "items.db-wal"}));
}

TEST_F(GuardedVfsTest, RefusesWithoutAskingTheSystem) {
  sqlite3_vfs watching = WatchingVfs();
  ASSERT_EQ(sqlite3_vfs_register(&watching, 1), SQLITE_OK);
  GuardedVfs* const guard = GuardedVfs::Open(path.c_str(), SteadyMilliseconds, store);
  ASSERT_NE(guard, nullptr);
  asked.clear();
  std::vector<std::max_align_t> memory(1 + guard->szOsFile / sizeof(std::max_align_t));
  auto* const file = reinterpret_cast<sqlite3_file*>(memory.data());
  const std::string longer = path + "-journal2";
  for (const char* name : {path.c_str(), longer.c_str(), R"(\\192.0.2.1\share\x-journal)", ""}) {
    for (const int kind : {SQLITE_OPEN_MAIN_DB, SQLITE_OPEN_MAIN_JOURNAL, SQLITE_OPEN_WAL,
                           SQLITE_OPEN_SUPER_JOURNAL, SQLITE_OPEN_TEMP_DB, SQLITE_OPEN_SUBJOURNAL,
                           SQLITE_OPEN_TRANSIENT_DB, SQLITE_OPEN_TEMP_JOURNAL}) {
      int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | kind;
      EXPECT_EQ(guard->xOpen(guard, name, file, flags, &flags), SQLITE_CANTOPEN) << name << kind;
      EXPECT_EQ(file->pMethods, nullptr);
    }
    int exists = 0;
    EXPECT_EQ(guard->xDelete(guard, name, 0), SQLITE_IOERR_DELETE) << name;
    EXPECT_EQ(guard->xAccess(guard, name, SQLITE_ACCESS_EXISTS, &exists), SQLITE_IOERR_ACCESS);
  }
  EXPECT_EQ(asked, std::set<std::string>());
  CloseRecordStore(store);
  sqlite3_vfs_unregister(&watching);
}

TEST_F(GuardedVfsTest, TimeIsUp) {
  sqlite3_vfs sleeping = *sqlite3_vfs_find(nullptr);
  sleeping.zName = "sleeping";
  sleeping.xSleep = [](sqlite3_vfs*, int microseconds) {
    now += 1000;
    return microseconds;
  };
  ASSERT_EQ(sqlite3_vfs_register(&sleeping, 1), SQLITE_OK);
  GuardedVfs* const guard = GuardedVfs::Open(
      path.c_str(), [] { return now; }, store);
  ASSERT_NE(guard, nullptr);
  guard->Allow(60);
  const auto runAt = [&](int64_t time) {
    now = time;
    return Execute(kLongQuery);
  };
  EXPECT_EQ(runAt(59), SQLITE_OK);
  EXPECT_EQ(runAt(60), SQLITE_INTERRUPT);
  guard->xSleep(guard, 1);
  EXPECT_EQ(runAt(1059), SQLITE_OK);
  EXPECT_EQ(runAt(1060), SQLITE_INTERRUPT);
  CloseRecordStore(store);
  sqlite3_vfs_unregister(&sleeping);
}

// The clock stands still at the opening and then at another time.
int64_t later = 0;
int64_t ClockThatJumps() {
  return std::exchange(now, later);
}

TEST_F(GuardedVfsTest, CheckThatTakesTooLongLeavesEverything) {
  ASSERT_EQ(
      Execute("CREATE TABLE other(x); INSERT INTO other SELECT i FROM (WITH RECURSIVE n(i) AS "
              "(VALUES(1) UNION ALL SELECT i+1 FROM n LIMIT 2000) SELECT i FROM n)"),
      SQLITE_OK);
  const auto openLater = [&](int64_t time) {
    now = 0;
    later = time;
    return Open(ClockThatJumps);
  };
  EXPECT_EQ(openLater(60000), kOneRow);
  EXPECT_EQ(schema, 1);
  EXPECT_EQ(Execute("DELETE FROM BlockItemLog"), SQLITE_READONLY);
  EXPECT_EQ(openLater(59999), kOneRow);
  now = later = 59999 + 59999;
  EXPECT_EQ(Execute(kLongQuery), SQLITE_OK);
  now = later = 59999 + 60000;
  EXPECT_EQ(Execute(kLongQuery), SQLITE_INTERRUPT);
  EXPECT_EQ(openLater(59999), kOneRow);
  EXPECT_EQ(Execute("DROP INDEX idx_BlockItemLog_ts_group_item"), SQLITE_OK);
  EXPECT_EQ(openLater(60000), kOneRow);
  EXPECT_EQ(schema, 0);
  EXPECT_EQ(openLater(59999), "");
  EXPECT_EQ(schema, 1);
  EXPECT_EQ(Execute("DROP TABLE BlockItemLog"), SQLITE_OK);
  EXPECT_EQ(openLater(60000), "");
  EXPECT_EQ(schema, 0);
}

}  // namespace
}  // namespace ostrell
