#include "store/record_store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <random>

#include "store/schema.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

namespace fs = std::filesystem;

constexpr char kTable[] =
    "CREATE TABLE BlockItemLog(id INTEGER PRIMARY KEY AUTOINCREMENT, ts INTEGER, detail TEXT,iname "
    "Text);";
constexpr char kIndex[] = "CREATE INDEX idx_BlockItemLog_ts_group_item ON BlockItemLog(ts);";
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
  static std::string Read(const fs::path& file) {
    Connection store;
    const std::string opened = std::to_string(OpenRecordStore(file.c_str(), store));
    const std::string schema = store ? " " + std::to_string(EnsureSchema(store.Get())) : "";
    const std::string rows = CompactText(FetchBlockItems(store, nullptr));
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

// The sqlite3 program says which of the damaged databases pass, and how many rows they hold.
TEST_F(RecordStoreTest, DamageAtRandomPlaces) {
  std::mt19937 random(20261125);
  std::array<int, 2> met{};
  for (int round = 0; round < 24; ++round) {
    Make(std::string(kTable) + kIndex +
         "INSERT INTO BlockItemLog(ts,detail) SELECT value,'{\"item\":'||value||'}' FROM "
         "generate_series(1,400);");
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    for (int place = 0; place < 3; ++place) {  // behind the page that holds the schema
      file.seekp(static_cast<std::streamoff>(4096 + random() % (fs::file_size(path) - 4104)));
      ASSERT_TRUE(file << std::string(8, '\xFF') << std::flush);
    }
    const bool passes = Shell("PRAGMA quick_check;") == "ok\n";
    ++met[passes ? 1 : 0];
    const std::string rows = passes ? Shell("SELECT count(*) FROM BlockItemLog;") : "0\n";
    Connection store;
    ASSERT_EQ(OpenRecordStore(path.c_str(), store), 1);
    ASSERT_EQ(EnsureSchema(store.Get()), 1);
    const JsonOwner fetched = FetchBlockItems(store, nullptr);
    EXPECT_EQ(std::to_string(json_array_size(fetched.Get())) + "\n", rows) << round;
  }
  EXPECT_GT(met[0], 0);
  EXPECT_GT(met[1], 0);
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
    uint64_t leftOut = 99;
    const JsonOwner fetched = FetchBlockItems(store, nullptr, &leftOut);
    return std::pair(json_array_size(fetched.Get()), leftOut);
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

}  // namespace
}  // namespace ostrell
