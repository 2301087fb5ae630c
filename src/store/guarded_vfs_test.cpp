#include "store/guarded_vfs.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <set>
#include <utility>
#include <vector>

#include "store/record_store.h"
#include "store/schema.h"
#include "store/statement.h"
#include "tests/support/fetched_rows.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

constexpr char kOneRow[] = R"([{"id":1,"ts":5,"detail":[]}] 1)";

// Long enough for a look at the clock.
constexpr char kLongQuery[] =
    "WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i+1 FROM n LIMIT 1000) "
    "SELECT count(*) FROM n";

// The files that the system's VFS is asked about, and those that it is to delete, in order.
sqlite3_vfs* systemVfs = nullptr;
Names asked;
std::vector<std::string> deleted;

std::string Note(const char* file) {
  const std::string path = file == nullptr ? "temporary" : file;
  return *asked.insert(path.substr(path.find_last_of("/\\") + 1)).first;
}

// In milliseconds: the clock, and the sleep, which takes no time.
int64_t now = 0;
int64_t slept = 0;

// A database of one row in a folder with a name past ASCII.
class GuardedVfsTest : public testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(folder);
    watching.zName = "watching";
    watching.xSleep = [](sqlite3_vfs*, int microseconds) {
      slept += microseconds / 1000;
      return microseconds;
    };
    watching.xOpen = [](sqlite3_vfs*, const char* name, sqlite3_file* opened, int flags, int* to) {
      Note(name);
      return systemVfs->xOpen(systemVfs, name, opened, flags, to);
    };
    watching.xDelete = [](sqlite3_vfs*, const char* name, int sync) {
      deleted.push_back(Note(name));
      return systemVfs->xDelete(systemVfs, name, sync);
    };
    watching.xAccess = [](sqlite3_vfs*, const char* name, int flags, int* result) {
      Note(name);
      return systemVfs->xAccess(systemVfs, name, flags, result);
    };
    ASSERT_EQ(sqlite3_vfs_register(&watching, 1), SQLITE_OK);
    ASSERT_EQ(Open(), " 1");
    ASSERT_EQ(Execute("INSERT INTO BlockItemLog(ts,detail) VALUES(5,'[]')"), SQLITE_OK);
    asked.clear();
  }
  void TearDown() override {
    CloseRecordStore(store);
    sqlite3_vfs_unregister(&watching);
    fs::remove_all(folder);
  }

  // The rows, and whether they have their schema.
  std::string Open(MonotonicClock clock = SteadyMilliseconds) {
    EXPECT_EQ(OpenRecordStore(path.c_str(), store, 1, clock), 1);
    const int schema = EnsureSchema(store.Get());
    return FetchedRows(store) + " " + std::to_string(schema);
  }

  int Execute(const char* sql) { return sqlite3_exec(store.Get(), sql, nullptr, nullptr, nullptr); }

  int ExecuteAt(int64_t time, const char* sql) {
    now = time;
    return Execute(sql);
  }

  const fs::path folder =
      fs::temp_directory_path() / (fs::path(u8"ostrell \u00E9\u4E2D") += std::to_string(getpid()));
  const fs::path file = folder / "items.db";
  const std::string path = reinterpret_cast<const char*>(file.u8string().c_str());
  sqlite3_vfs watching = *(systemVfs = sqlite3_vfs_find(nullptr));
  Connection store;
};

// SQLite deletes the file that a journal names as the one which lists all journals of a
// transaction, once none of those it lists is there.
TEST_F(GuardedVfsTest, JournalThatNamesAnotherFile) {
  for (const RecordedCase& recorded : CasesOf("database_journal")) {
    CloseRecordStore(store);
    std::string content = recorded["header"];
    content.resize(512);
    content += recorded["record"];
    const fs::path journal = fs::path(file) += "-journal";
    std::ofstream(journal, std::ios::binary) << content;
    asked.clear();
    EXPECT_EQ(Open(), " 0") << recorded.Name();
    CloseRecordStore(store);
    EXPECT_EQ(asked, (Names{"items.db", "items.db-journal"}));
    ASSERT_EQ(fs::file_size(journal), content.size());
    fs::remove(journal);
    EXPECT_EQ(Open(), kOneRow);
  }
}

TEST_F(GuardedVfsTest, OtherFiles) {
  EXPECT_EQ(Open(), kOneRow);
  constexpr char kOther[] = "ATTACH 'other.db' AS other";
  EXPECT_EQ(Execute(kOther), SQLITE_ERROR);
  sqlite3_limit(store.Get(), SQLITE_LIMIT_ATTACHED, 10);
  EXPECT_EQ(Execute(kOther), SQLITE_ERROR);
  // Sorting and a statement that may have to be undone, both larger than what stays in a cache.
  EXPECT_EQ(Execute("CREATE TABLE big(x); INSERT INTO big SELECT randomblob(2000) FROM "
                    "(WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i+1 FROM n LIMIT 4000) "
                    "SELECT i FROM n); CREATE INDEX bigger ON big(x); DROP TABLE big;"),
            SQLITE_OK);
  EXPECT_NE(Execute("VACUUM"), SQLITE_OK);
  EXPECT_EQ(Execute("PRAGMA journal_mode=DELETE; DELETE FROM BlockItemLog"), SQLITE_OK);
  CloseRecordStore(store);
  EXPECT_EQ(asked, (Names{"items.db", "items.db-journal", "items.db-wal"}));
}

TEST_F(GuardedVfsTest, RefusesWithoutAskingTheSystem) {
  GuardedVfs* const guard = GuardedVfs::Open(path.c_str(), SteadyMilliseconds, store);
  ASSERT_NE(guard, nullptr);
  asked.clear();
  std::vector<std::max_align_t> memory(1 + guard->szOsFile / sizeof(std::max_align_t));
  auto* const opened = reinterpret_cast<sqlite3_file*>(memory.data());
  const std::string longer = path + "-journal2";
  for (const char* name : {path.c_str(), longer.c_str(), R"(\\192.0.2.1\share\x-journal)", ""}) {
    // Each kind of file that SQLite knows.
    for (int flags = SQLITE_OPEN_MAIN_DB; flags <= SQLITE_OPEN_WAL; flags *= 2) {
      EXPECT_EQ(guard->xOpen(guard, name, opened, flags, nullptr), SQLITE_CANTOPEN) << name;
      EXPECT_EQ(opened->pMethods, nullptr);
    }
    int exists = 0;
    EXPECT_EQ(guard->xDelete(guard, name, 0), SQLITE_IOERR_DELETE) << name;
    EXPECT_EQ(guard->xAccess(guard, name, SQLITE_ACCESS_EXISTS, &exists), SQLITE_IOERR_ACCESS);
  }
  // Side files are opened as what they are.
  EXPECT_EQ(guard->xOpen(guard, (path + "-wal").c_str(), opened, SQLITE_OPEN_TEMP_DB, nullptr),
            SQLITE_CANTOPEN);
  EXPECT_EQ(asked, Names());
}

TEST_F(GuardedVfsTest, DamagedFileAloneIsDeletedAndReplaced) {
  CloseRecordStore(store);
  ASSERT_TRUE(std::ofstream(file, std::ios::binary) << std::string(5000, 'x') << std::flush);
  deleted.clear();
  EXPECT_EQ(Open(), " 1");
  // The journal is that of the new one, which becomes a database for write-ahead logging.
  EXPECT_EQ(deleted, (std::vector<std::string>{"items.db", "items.db-journal"}));
  EXPECT_EQ(fs::file_size(file) % 4096, 0);
}

TEST_F(GuardedVfsTest, WaitsAMinuteForAWriter) {
  Connection other = std::move(store);
  for (const char* sql : {"PRAGMA journal_mode=DELETE", "BEGIN EXCLUSIVE"}) {
    ASSERT_EQ(sqlite3_exec(other.Get(), sql, nullptr, nullptr, nullptr), SQLITE_OK) << sql;
  }
  slept = 0;
  EXPECT_EQ(OpenRecordStore(path.c_str(), store), 1);
  EXPECT_EQ(slept, 60000);
  EXPECT_EQ(Open(), " 0");
  CloseRecordStore(other);
  EXPECT_EQ(Open(), kOneRow);
}

TEST_F(GuardedVfsTest, TimeIsUp) {
  GuardedVfs* const guard = GuardedVfs::Open(
      path.c_str(), [] { return now + slept; }, store);
  ASSERT_NE(guard, nullptr);
  now = slept = 0;
  guard->Allow(60);
  for (const int times : {0, 1}) {
    EXPECT_EQ(slept, 1000 * times);
    EXPECT_EQ(ExecuteAt(59, kLongQuery), SQLITE_OK);
    EXPECT_EQ(ExecuteAt(60, kLongQuery), SQLITE_INTERRUPT);
    guard->xSleep(guard, 1000000);
  }
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
  EXPECT_EQ(Execute("DELETE FROM BlockItemLog"), SQLITE_READONLY);
  EXPECT_EQ(openLater(59999), kOneRow);
  EXPECT_EQ(ExecuteAt(later = 59999 + 59999, kLongQuery), SQLITE_OK);
  EXPECT_EQ(ExecuteAt(later = 59999 + 60000, kLongQuery), SQLITE_INTERRUPT);
  EXPECT_EQ(openLater(59999), kOneRow);
  EXPECT_EQ(Execute("DROP INDEX idx_BlockItemLog_ts_group_item"), SQLITE_OK);
  EXPECT_EQ(openLater(60000), R"([{"id":1,"ts":5,"detail":[]}] 0)");
  EXPECT_EQ(openLater(59999), " 1");
  EXPECT_EQ(Execute("DROP TABLE BlockItemLog"), SQLITE_OK);
  EXPECT_EQ(openLater(60000), " 0");
}

// What the documents promise of an open connection, as SQLite tells it.
TEST_F(GuardedVfsTest, LimitsAndSwitches) {
  for (const auto& [limit, value] :
       {std::pair(SQLITE_LIMIT_LENGTH, 16777216), std::pair(SQLITE_LIMIT_SQL_LENGTH, 1048576),
        std::pair(SQLITE_LIMIT_VDBE_OP, 100000), std::pair(SQLITE_LIMIT_ATTACHED, 0),
        std::pair(SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 250), std::pair(SQLITE_LIMIT_TRIGGER_DEPTH, 0),
        std::pair(SQLITE_LIMIT_WORKER_THREADS, 0)}) {
    EXPECT_EQ(sqlite3_limit(store.Get(), limit, -1), value) << limit;
  }
  for (const auto& [part, value] :
       {std::pair(SQLITE_DBCONFIG_DEFENSIVE, 1), std::pair(SQLITE_DBCONFIG_ENABLE_TRIGGER, 0),
        std::pair(SQLITE_DBCONFIG_ENABLE_VIEW, 0)}) {
    int isOn = -1;
    EXPECT_EQ(sqlite3_db_config(store.Get(), part, -1, &isOn), SQLITE_OK);
    EXPECT_EQ(isOn, value) << part;
  }
  const Statement check = Prepare(store.Get(), "PRAGMA cell_size_check");
  ASSERT_EQ(sqlite3_step(check.Get()), SQLITE_ROW);
  EXPECT_EQ(sqlite3_column_int(check.Get(), 0), 1);
  EXPECT_EQ(sqlite3_hard_heap_limit64(-1), 67108864);
}

}  // namespace
}  // namespace ostrell
