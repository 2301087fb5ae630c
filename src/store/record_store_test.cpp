#include "store/record_store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <random>
#include <vector>

#include "store/schema.h"
#include "store/statement.h"

namespace ostrell {
namespace {

namespace fs = std::filesystem;

constexpr char kTable[] =
    "CREATE TABLE BlockItemLog(id INTEGER PRIMARY KEY AUTOINCREMENT, ts INTEGER, detail TEXT,iname "
    "Text);";
constexpr char kIndex[] = "CREATE INDEX idx_BlockItemLog_ts_group_item ON BlockItemLog(ts);";
constexpr char kRows[] =
    R"(INSERT INTO BlockItemLog(ts,detail) VALUES(5,'{"a":1}'),(7,'no json'),(9,NULL);)";
const std::string kSound = std::string(kTable) + kIndex + kRows;
// What Read gives for these rows, and for a store that opened without any.
constexpr char kThreeRows[] =
    R"(1 1 [{"id":1,"ts":5,"detail":{"a":1}},{"id":2,"ts":7},{"id":3,"ts":9}])";
constexpr char kNoRows[] = "1 1 ";
constexpr char kFourRows[] =
    R"(1 1 [{"id":0,"ts":0},{"id":1,"ts":5,"detail":{"a":1}},{"id":2,"ts":7},{"id":3,"ts":9}])";

class RecordStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string made = fs::temp_directory_path() / "ostrell_store_XXXXXX";
    ASSERT_NE(mkdtemp(made.data()), nullptr);
    folder = made;
    path = folder / "items.db";
  }
  void TearDown() override { fs::remove_all(folder); }

  // What the sqlite3 program prints; afterwards the shell runs a command.
  std::string Shell(const std::string& sql, std::string_view command = "") const {
    std::ofstream(folder / "sql") << sql;
    std::ofstream(folder / "script") << "sqlite3 items.db <sql >out 2>err\n" << command;
    EXPECT_NE(std::system(("cd " + folder.string() + " && sh script").c_str()), -1);
    std::ifstream out(folder / "out");
    return {std::istreambuf_iterator<char>(out), {}};
  }

  // Whether it opened, whether it has its schema, and its rows.
  static std::string Read(const fs::path& file, int busyTimeout = kBusyTimeoutMilliseconds) {
    Connection store;
    std::string outcome = std::to_string(OpenRecordStore(file.c_str(), store, busyTimeout));
    outcome += store ? " " + std::to_string(EnsureSchema(store.Get())) + " " : "";
    return outcome + CompactText(FetchBlockItems(store, nullptr));
  }

  fs::path folder;
  fs::path path;
};

TEST_F(RecordStoreTest, KeepsWhatIsSoundAndReplacesTheRest) {
  std::string otherTable = kTable;
  otherTable.replace(otherTable.find(",iname"), 1, ", ");
  std::string otherIndex = kIndex;
  otherIndex.replace(otherIndex.find("(ts"), 3, "(ts,id");
  const struct {
    std::string sql;
    std::string_view damage;  // a command of the shell
    std::string_view outcome;
  } cases[] = {{kSound, "", kThreeRows},
               {otherTable + kIndex + kRows, "", kNoRows},
               {std::string(kTable) + kRows, "", kNoRows},
               {std::string(kTable) + otherIndex + kRows, "", kNoRows},
               {kSound + "CREATE TABLE o(x CHECK(json_valid(x))); INSERT INTO o VALUES('{}');", "",
                kThreeRows},
               {kSound + "INSERT INTO BlockItemLog(iname) VALUES(printf('%.*c',100000,'x'));"
                         "UPDATE BlockItemLog SET id=0 WHERE id=4;",
                "", kFourRows},
               {kSound, "truncate -s -4096 items.db", kNoRows},
               {kSound, "echo not a database at all >items.db", kNoRows},
               {kSound, "truncate -s 0 items.db", kNoRows},
               {kSound, "rm items.db", kNoRows}};
  for (const auto& row : cases) {
    fs::remove(path);
    Shell(row.sql, row.damage);
    const std::string which = row.sql + std::string(row.damage);
    EXPECT_EQ(Read(path), row.outcome) << which;
    EXPECT_EQ(Shell("SELECT sql||';' FROM sqlite_master WHERE name LIKE '%BlockItemLog%' ORDER BY "
                    "rootpage; PRAGMA quick_check; PRAGMA journal_mode;"),
              std::string(kTable) + "\n" + kIndex + "\nok\nwal\n")
        << which;
  }
  EXPECT_EQ(Read(folder / "missing" / "items.db"), "0");
  EXPECT_EQ(Read(""), "0");
}

// The sqlite3 program says which of the damaged databases pass, and how many rows they hold.
TEST_F(RecordStoreTest, DamageAtRandomPlaces) {
  std::mt19937 random(20261125);
  std::array<int, 2> met{};
  for (int round = 0; round < 24; ++round) {
    fs::remove(path);
    Shell(std::string(kTable) + kIndex +
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

// The sqlite3 program has functions and collations that the library lacks, and no limits. What was
// not checked through is read, but stays as it is.
TEST_F(RecordStoreTest, WhatCannotBeCheckedStays) {
  const auto other = [](const std::string& constraint) {
    return "CREATE TABLE o(x COLLATE nocase CHECK(" + constraint +
           ")); INSERT INTO o VALUES('{\"a\":1}');";
  };
  std::vector<std::pair<std::string, std::string>> cases = {
      {kSound + "CREATE TABLE o(x CHECK(json_valid(x)));"
                "INSERT INTO o VALUES(json_quote(replace(hex(zeroblob(16384)),'0','x')));",
       kThreeRows},
      {std::string(kTable) + kRows + other("sha3(x)"), "1 0 " + std::string(kThreeRows).substr(4)},
      {other("sha3(x)"), "1 0 "}};
  for (const char* constraint :
       {"sha3(x)", "x>'1' COLLATE uint", "NOT x LIKE substr(hex(zeroblob(200)),1,250)||'%'",
        "instr(x,'a')", "replace(x,'a','b')<>''", "trim(x,'a')<>''", "ltrim(x,'a')<>''",
        "rtrim(x,'a')<>''", "json_patch(x,x)<>''", "printf(x)<>''", "format(x)<>''"}) {
    cases.emplace_back(kSound + other(constraint), kThreeRows);
  }
  for (const auto& [sql, outcome] : cases) {
    fs::remove(path);
    Shell(sql);
    const std::string look =
        "PRAGMA journal_mode; SELECT sql FROM sqlite_master; SELECT * FROM BlockItemLog; SELECT "
        "count(*) FROM o;";
    const std::string before = Shell(look);
    ASSERT_TRUE(before.starts_with("delete\nCREATE ")) << before;
    EXPECT_EQ(Read(path), outcome) << sql;
    EXPECT_EQ(Shell(look), before) << sql;
  }
}

// A log of a few pages may bring a table whose constraint costs hours and gigabytes.
TEST_F(RecordStoreTest, CostlyConstraintInALog) {
  for (const std::string_view constraint :
       {"length(hex(zeroblob(400000000)))", "printf('%.*c',900000000,x)>''",
        "format('%.*c',900000000,x)>''"}) {
    fs::remove(path);
    Shell(kSound + "PRAGMA journal_mode=WAL;");
    std::string checks;
    for (int i = 0; i < 300; ++i) {
      checks += std::string(i == 0 ? "" : " AND ") + std::string(constraint);
    }
    Shell(
        ".dbconfig no_ckpt_on_close on\nPRAGMA ignore_check_constraints=ON;\nCREATE TABLE o(x "
        "CHECK(" +
        checks + "));\nINSERT INTO o VALUES('x');\n");
    ASSERT_GT(fs::file_size(path.string() + "-wal"), 4096);
    sqlite3_memory_highwater(1);
    EXPECT_EQ(Read(path), kThreeRows) << constraint;
    EXPECT_LT(sqlite3_memory_highwater(0), 4 << 20);
    EXPECT_EQ(Shell("SELECT count(*) FROM o;"), "1\n");
  }
}

TEST_F(RecordStoreTest, MemoryOfSqliteIsBounded) {
  EXPECT_EQ(Read(path), kNoRows);
  const auto has = [](uint64_t size) {
    void* const memory = sqlite3_malloc64(size);
    sqlite3_free(memory);
    return memory != nullptr;
  };
  EXPECT_TRUE(has((64 << 20) - 4096));
  EXPECT_FALSE(has(64 << 20));
}

TEST_F(RecordStoreTest, RowsAndTextBeyondTheLimits) {
  const auto fetch = [](int rows, const std::string& detail) {
    Connection store;
    EXPECT_EQ(sqlite3_open(":memory:", store.Receive()), SQLITE_OK);
    const std::string sql =
        "CREATE VIEW BlockItemLog AS WITH RECURSIVE n(id) AS (VALUES(1) UNION ALL SELECT id+1 FROM "
        "n "
        "LIMIT " +
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

TEST_F(RecordStoreTest, LongestDocument) {
  for (const auto& [length, rows] :
       {std::pair(16777216, size_t{2}), std::pair(16777217, size_t{1})}) {
    fs::remove(path);
    Shell(std::string(kTable) + kIndex +
          "INSERT INTO BlockItemLog(detail) VALUES(NULL),(printf('%.*c'," + std::to_string(length) +
          ",'x'));");
    Connection store;
    EXPECT_EQ(OpenRecordStore(path.c_str(), store), 1);
    EXPECT_EQ(json_array_size(FetchBlockItems(store, nullptr).Get()), rows);
  }
}

sqlite3* writer = nullptr;

TEST_F(RecordStoreTest, WaitsForAWriter) {
  Shell(kSound);
  Connection other;
  ASSERT_EQ(sqlite3_open(path.c_str(), other.Receive()), SQLITE_OK);
  writer = other.Get();
  ASSERT_EQ(sqlite3_exec(writer, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_EQ(Read(path, 1), "1 0 ");

  // SQLite sleeps while it waits: that ends the writer's transaction, and takes no time.
  sqlite3_vfs waiting = *sqlite3_vfs_find(nullptr);
  waiting.zName = "waiting";
  waiting.xSleep = [](sqlite3_vfs*, int time) {
    sqlite3_exec(writer, "COMMIT", nullptr, nullptr, nullptr);
    return time;
  };
  ASSERT_EQ(sqlite3_vfs_register(&waiting, 1), SQLITE_OK);
  EXPECT_EQ(Read(path), kThreeRows);
  sqlite3_vfs_unregister(&waiting);
  EXPECT_NE(sqlite3_get_autocommit(writer), 0);
}

TEST_F(RecordStoreTest, RowsInTheLogOfAWriter) {
  Connection other;
  ASSERT_EQ(sqlite3_open(path.c_str(), other.Receive()), SQLITE_OK);
  const std::string sql = "PRAGMA journal_mode=WAL;" + kSound;
  ASSERT_EQ(sqlite3_exec(other.Get(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
  const fs::path whole = folder / "whole.db";
  const fs::path alone = folder / "alone.db";
  fs::copy_file(path, whole);
  fs::copy_file(path.string() + "-wal", whole.string() + "-wal");
  fs::copy_file(path, alone);
  EXPECT_EQ(Read(whole), kThreeRows);
  EXPECT_EQ(Read(alone), kNoRows);
  EXPECT_EQ(Read(path), kThreeRows);
}

TEST_F(RecordStoreTest, WithoutRightsTheFileStays) {
  if (geteuid() == 0) {
    GTEST_SKIP() << "root has every right";
  }
  Shell(kSound);
  ASSERT_EQ(chmod(path.c_str(), 0), 0);
  EXPECT_EQ(Read(path), "0");
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  EXPECT_EQ(Read(path), kThreeRows);
}

}  // namespace
}  // namespace ostrell
