#include "store/record_store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "store/schema.h"
#include "tests/support/fetched_rows.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

namespace fs = std::filesystem;

constexpr char kTable[] =
    "CREATE TABLE BlockItemLog(id INTEGER PRIMARY KEY AUTOINCREMENT, ts INTEGER, detail TEXT,iname "
    "Text);";
constexpr char kIndex[] = "CREATE INDEX idx_BlockItemLog_ts_group_item ON BlockItemLog(ts);";

enum class Fault { kNone, kOpen, kRead, kEmptyRead, kBadPage, kWrite, kLock, kAllocation };

// Which call of a kind fails, counted from 1, and whether all behind it fail, too. Of a bad page it
// is the page whose reading always fails.
struct Plan {
  Fault kind = Fault::kNone;
  int call = 0;
  bool lasts = false;
  int calls = 0;
  bool failed = false;
} plan;

class RecordStoreTest : public testing::Test {
 protected:
  void TearDown() override { fs::remove_all(folder); }

  // What the sqlite3 program prints; afterwards the shell runs a command.
  std::string Shell(const std::string& sql, std::string_view command = "") const {
    std::ofstream(folder / "sql") << sql;
    std::ofstream(folder / "script") << "sqlite3 items.db <sql >out 2>err\n" << command;
    EXPECT_NE(std::system(("cd " + folder.string() + " && sh script").c_str()), -1);
    std::ifstream out(folder / "out");
    return {std::istreambuf_iterator<char>(out), {}};
  }

  void Make(const std::string& sql, std::string_view damage = "") const {
    fs::remove_all(folder);
    fs::create_directory(folder);
    Shell(sql, damage);
  }

  // Whether it opened, whether it has its schema, and its rows.
  static std::string Read(const fs::path& file, int busyTimeout = kBusyTimeoutMilliseconds) {
    Connection store;
    const std::string opened = std::to_string(OpenRecordStore(file.c_str(), store, busyTimeout));
    if (plan.kind == Fault::kEmptyRead) {
      plan.kind = Fault::kNone;  // what is found sound is believed
    }
    const std::string schema = store ? " " + std::to_string(EnsureSchema(store.Get())) : "";
    const std::string rows = FetchedRows(store);
    return opened + schema + " " + (rows.empty() ? "no rows" : rows);
  }

  const fs::path folder = fs::temp_directory_path() / ("ostrell_store_" + std::to_string(getpid()));
  const fs::path path = folder / "items.db";
};

// Keeps what is sound, replaces the rest, and leaves alone what was not checked through: the
// sqlite3 program has functions and collations that the library lacks, and no limits.
TEST_F(RecordStoreTest, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("record_store")) {
    const bool stays = recorded.Has("stays");
    const std::string look = stays ? "PRAGMA journal_mode; SELECT sql FROM sqlite_master; SELECT * "
                                     "FROM BlockItemLog; SELECT count(*) FROM o;"
                                   : "SELECT sql||';' FROM sqlite_master WHERE name LIKE "
                                     "'%BlockItemLog%' ORDER BY rootpage; PRAGMA quick_check; "
                                     "PRAGMA journal_mode;";
    auto damages = recorded.All("damage");
    damages.resize(std::max<size_t>(damages.size(), 1));
    for (const std::string& sql : recorded.All("sql")) {
      for (const std::string& damage : damages) {
        SCOPED_TRACE(testing::Message() << recorded.Name() << ": " << sql << damage);
        Make(sql, damage);
        std::string expected = std::string(kTable) + "\n" + kIndex + "\nok\nwal\n";
        if (stays) {
          expected = Shell(look);
          ASSERT_NE(expected.find("\nCREATE "), std::string::npos);
        }
        sqlite3_memory_highwater(1);
        EXPECT_EQ(Read(path), recorded["outcome"]);
        EXPECT_LT(sqlite3_memory_highwater(0), stays ? 4 << 20 : 64 << 20);
        EXPECT_EQ(Shell(look), expected);
      }
    }
  }
  EXPECT_EQ(Read(folder / "missing" / "items.db"), "0 no rows");
  EXPECT_EQ(Read(""), "0 no rows");
}

TEST_F(RecordStoreTest, RowsAndTextBeyondTheLimits) {
  const auto fetch = [](int rows, const std::string& detail) {
    Connection store;
    EXPECT_EQ(sqlite3_open(":memory:", store.Receive()), SQLITE_OK);
    const std::string sql =
        "CREATE VIEW BlockItemLog AS WITH RECURSIVE n(id) AS (VALUES(1) UNION ALL SELECT id+1 "
        "FROM n LIMIT " +
        std::to_string(rows) + ") SELECT id, 0 AS ts, " + detail + " AS detail FROM n";
    EXPECT_EQ(sqlite3_exec(store.Get(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    size_t fetched = 0;
    const uint64_t leftOut =
        FetchBlockItems(store, nullptr, [&fetched](const BlockItem&) { ++fetched; });
    return std::pair(fetched, leftOut);
  };
  EXPECT_EQ(fetch(1000002, "NULL"), std::pair(size_t{1000000}, uint64_t{2}));
  EXPECT_EQ(fetch(19, "CASE WHEN id<=16 THEN hex(zeroblob(8388608)) WHEN id=18 THEN 'x' END"),
            std::pair(size_t{17}, uint64_t{2}));
  EXPECT_EQ(fetch(0, "NULL"), std::pair(size_t{0}, uint64_t{0}));
}

TEST_F(RecordStoreTest, WithoutRightsTheFileStays) {
  if (geteuid() == 0) {
    GTEST_SKIP() << "root has every right";
  }
  Make(std::string(kTable) + kIndex + "INSERT INTO BlockItemLog(ts) VALUES(5);");
  ASSERT_EQ(chmod(path.c_str(), 0), 0);
  EXPECT_EQ(Read(path), "0 no rows");
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  EXPECT_EQ(Read(path), R"(1 1 [{"id":1,"ts":5}])");
}

bool Fails(Fault kind, sqlite3_int64 page = 0) {
  if (kind != plan.kind) {
    return false;
  }
  const int call = kind == Fault::kBadPage ? static_cast<int>(page) : ++plan.calls;
  const bool fails = plan.lasts && page == 0 ? call >= plan.call : call == plan.call;
  plan.failed = plan.failed || fails;
  return fails;
}

sqlite3_vfs* systemVfs = nullptr;
sqlite3_mem_methods systemMemory;

// The methods of a kind of file, of the system and with faults.
struct FileMethods {
  const sqlite3_io_methods* system = nullptr;
  sqlite3_io_methods faulty{};
} databaseMethods, sideMethods;

const sqlite3_io_methods& SystemMethods(const sqlite3_file* file) {
  return *(file->pMethods == &databaseMethods.faulty ? databaseMethods : sideMethods).system;
}

int Read(sqlite3_file* file, void* bytes, int size, sqlite3_int64 offset) {
  if (Fails(Fault::kRead) || Fails(Fault::kBadPage, offset / 4096 + 1)) {
    return SQLITE_IOERR_READ;
  }
  const int result = SystemMethods(file).xRead(file, bytes, size, offset);
  if (Fails(Fault::kEmptyRead)) {
    std::fill_n(static_cast<char*>(bytes), size, '\0');
  }
  return result;
}

int OpenFaulty(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* flagsThen) {
  if (Fails(Fault::kOpen)) {
    file->pMethods = nullptr;
    return SQLITE_CANTOPEN;
  }
  const int result = systemVfs->xOpen(systemVfs, name, file, flags, flagsThen);
  if (result != SQLITE_OK) {
    return result;
  }
  FileMethods& methods = (flags & SQLITE_OPEN_MAIN_DB) != 0 ? databaseMethods : sideMethods;
  methods = {file->pMethods, *file->pMethods};
  methods.faulty.xRead = Read;
  methods.faulty.xWrite = [](sqlite3_file* to, const void* bytes, int size, sqlite3_int64 offset) {
    return Fails(Fault::kWrite) ? SQLITE_FULL : SystemMethods(to).xWrite(to, bytes, size, offset);
  };
  methods.faulty.xTruncate = [](sqlite3_file* cut, sqlite3_int64 size) {
    return Fails(Fault::kWrite) ? SQLITE_IOERR_TRUNCATE : SystemMethods(cut).xTruncate(cut, size);
  };
  methods.faulty.xSync = [](sqlite3_file*, int) { return SQLITE_OK; };  // as fast as memory
  methods.faulty.xLock = [](sqlite3_file* locked, int level) {
    return Fails(Fault::kLock) ? SQLITE_BUSY : SystemMethods(locked).xLock(locked, level);
  };
  methods.faulty.xShmLock = [](sqlite3_file* locked, int offset, int count, int how) {
    return (how & SQLITE_SHM_LOCK) != 0 && Fails(Fault::kLock)
               ? SQLITE_BUSY
               : SystemMethods(locked).xShmLock(locked, offset, count, how);
  };
  file->pMethods = &methods.faulty;
  return result;
}

// Puts the faulty memory below SQLite, or the system's again. Small pieces come from it, too,
// unless there is a reserve of them.
void UseMemory(const sqlite3_mem_methods& memory, int reserve) {
  ASSERT_EQ(sqlite3_shutdown(), SQLITE_OK);
  ASSERT_EQ(sqlite3_config(SQLITE_CONFIG_MALLOC, &memory), SQLITE_OK);
  ASSERT_EQ(sqlite3_config(SQLITE_CONFIG_LOOKASIDE, 1200, reserve), SQLITE_OK);
  ASSERT_EQ(sqlite3_initialize(), SQLITE_OK);
}

class RecordStoreFaultTest : public RecordStoreTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(sqlite3_shutdown(), SQLITE_OK);
    ASSERT_EQ(sqlite3_config(SQLITE_CONFIG_GETMALLOC, &systemMemory), SQLITE_OK);
    sqlite3_mem_methods memory = systemMemory;
    memory.xMalloc = [](int size) {
      return Fails(Fault::kAllocation) ? nullptr : systemMemory.xMalloc(size);
    };
    memory.xRealloc = [](void* old, int size) {
      return Fails(Fault::kAllocation) ? nullptr : systemMemory.xRealloc(old, size);
    };
    UseMemory(memory, 0);
    systemVfs = sqlite3_vfs_find(nullptr);
    vfs = *systemVfs;
    vfs.zName = "faulty";
    vfs.xOpen = OpenFaulty;
    vfs.xSleep = [](sqlite3_vfs*, int microseconds) { return microseconds; };
    ASSERT_EQ(sqlite3_vfs_register(&vfs, 1), SQLITE_OK);
  }
  void TearDown() override {
    sqlite3_vfs_unregister(&vfs);
    UseMemory(systemMemory, 40);
    fs::remove_all(used);
    RecordStoreTest::TearDown();
  }

  // Lets each call fail in turn. How many there were.
  int FailEach(Fault kind, bool lasts) const {
    const auto memory = sqlite3_memory_used();
    for (int call = 1;; ++call) {
      fs::remove_all(used);
      fs::copy(folder, used);
      plan = {kind, call, lasts};
      Read(used / "items.db", 0);
      const bool failed = plan.failed;
      plan = {};
      EXPECT_EQ(sqlite3_memory_used(), memory);
      EXPECT_EQ(Read(used / "items.db", 0),
                R"(1 1 [{"id":1,"ts":5,"detail":{"a":1}},{"id":2,"ts":7}])")
          << "call " << call << " of kind " << static_cast<int>(kind);
      if (!failed || HasFailure()) {
        return call - 1;
      }
    }
  }

  const fs::path used = folder.string() + "_used";
  sqlite3_vfs vfs{};
};

// An opening, a reading, a writing, a lock or an allocation that fails may cost a report, never the
// rows.
TEST_F(RecordStoreFaultTest, NoFaultLosesRows) {
  for (const char* settings : {"", "PRAGMA journal_mode=WAL;", "PRAGMA encoding='UTF-16';"}) {
    // The rows are in the database or in its log.
    Make(".dbconfig no_ckpt_on_close on\n" + std::string(settings) + kTable + kIndex +
         R"(INSERT INTO BlockItemLog(ts,detail) VALUES(5,'{"a":1}'),(7,NULL);)");
    fs::remove(folder / "items.db-shm");
    for (const bool lasts : {false, true}) {
      SCOPED_TRACE(std::string(settings) + (lasts ? " lasting" : " once"));
      EXPECT_GT(FailEach(Fault::kOpen, lasts), 0);
      EXPECT_GT(FailEach(Fault::kRead, lasts), 4);
      EXPECT_GT(FailEach(Fault::kWrite, lasts), 0);
      EXPECT_GT(FailEach(Fault::kLock, lasts), 4);
      EXPECT_GT(FailEach(Fault::kAllocation, lasts), 100);
    }
    if (!fs::exists(folder / "items.db-wal")) {
      EXPECT_GT(FailEach(Fault::kEmptyRead, false), 2);
      EXPECT_EQ(FailEach(Fault::kBadPage, true), 4);
    }
  }
}

}  // namespace
}  // namespace ostrell
