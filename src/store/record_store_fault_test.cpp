// A read, a lock or an allocation that fails may cost a report, never the rows.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "store/record_store.h"
#include "store/schema.h"

namespace ostrell {
namespace {

namespace fs = std::filesystem;

constexpr char kRows[] = R"([{"id":1,"ts":5,"detail":{"a":1}},{"id":2,"ts":7}])";

enum class Fault { kNone, kRead, kEmptyRead, kBadPage, kLock, kAllocation };

// Which call of a kind fails, counted from 1, and whether all behind it fail, too. Of a bad page it
// is the page whose reading always fails.
struct Plan {
  Fault kind = Fault::kNone;
  int call = 0;
  bool lasts = false;
  int calls = 0;
  bool failed = false;
} plan;

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
  const int result = systemVfs->xOpen(systemVfs, name, file, flags, flagsThen);
  if (result != SQLITE_OK) {
    return result;
  }
  FileMethods& methods = (flags & SQLITE_OPEN_MAIN_DB) != 0 ? databaseMethods : sideMethods;
  methods = {file->pMethods, *file->pMethods};
  methods.faulty.xRead = Read;
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

class RecordStoreFaultTest : public testing::Test {
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
    fs::remove_all(folder);
  }

  // A database and its log, one of which holds the rows.
  void Make(const std::string& settings) const {
    fs::remove_all(folder);
    fs::create_directories(folder / "kept");
    Connection made;
    ASSERT_EQ(sqlite3_open((folder / "kept/items.db").c_str(), made.Receive()), SQLITE_OK);
    ASSERT_EQ(sqlite3_db_config(made.Get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr), 0);
    const std::string sql = settings + kBlockItemSchema.creation + ";" +
                            kBlockItemIndexes[0].creation +
                            R"(;INSERT INTO BlockItemLog(ts,detail) VALUES(5,'{"a":1}'),(7,NULL);)";
    ASSERT_EQ(sqlite3_exec(made.Get(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
  }

  std::string Rows() const {
    Connection store;
    OpenRecordStore((folder / "used/items.db").c_str(), store, 0);
    if (plan.kind == Fault::kEmptyRead) {
      plan.kind = Fault::kNone;  // what is found sound is believed
    }
    if (store) {
      EnsureSchema(store.Get());
    }
    return CompactText(FetchBlockItems(store, nullptr));
  }

  // Lets each call fail in turn. How many there were.
  int FailEach(Fault kind, bool lasts) const {
    const auto used = sqlite3_memory_used();
    for (int call = 1;; ++call) {
      fs::remove_all(folder / "used");
      fs::copy(folder / "kept", folder / "used");
      fs::remove(folder / "used/items.db-shm");
      plan = {kind, call, lasts};
      Rows();
      const bool failed = plan.failed;
      plan = {};
      EXPECT_EQ(sqlite3_memory_used(), used);
      EXPECT_EQ(Rows(), kRows) << "call " << call << " of kind " << static_cast<int>(kind);
      if (!failed || HasFailure()) {
        return call - 1;
      }
    }
  }

  const fs::path folder =
      fs::temp_directory_path() / ("ostrell_faults_" + std::to_string(getpid()));
  sqlite3_vfs vfs{};
};

TEST_F(RecordStoreFaultTest, NoFaultLosesRows) {
  for (const char* settings : {"", "PRAGMA journal_mode=WAL;", "PRAGMA encoding='UTF-16';"}) {
    Make(settings);
    for (const bool lasts : {false, true}) {
      SCOPED_TRACE(std::string(settings) + (lasts ? " lasting" : " once"));
      EXPECT_GT(FailEach(Fault::kRead, lasts), 4);
      EXPECT_GT(FailEach(Fault::kLock, lasts), 4);
      EXPECT_GT(FailEach(Fault::kAllocation, lasts), 100);
    }
    if (!fs::exists(folder / "kept/items.db-wal")) {
      EXPECT_GT(FailEach(Fault::kEmptyRead, false), 2);
      EXPECT_EQ(FailEach(Fault::kBadPage, true), 4);
    }
  }
}

}  // namespace
}  // namespace ostrell
