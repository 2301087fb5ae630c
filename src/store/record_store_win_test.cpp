#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "base/text.h"
#include "store/record_store.h"
#include "store/schema.h"
#include "store/statement.h"

namespace ostrell {
namespace {

constexpr char kInsert[] = "INSERT INTO BlockItemLog(ts,detail) VALUES(5,'[]')";
constexpr char kOneRow[] = R"([{"id":1,"ts":5,"detail":[]}])";

// A database of one row in a folder with a name past ASCII.
class RecordStoreWinTest : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(file.parent_path());
    ASSERT_EQ(Open(), "");
    ASSERT_EQ(ExecBound(store.Get(), kInsert, -1, "", {}), 1);
    ASSERT_EQ(Open(), kOneRow);
  }
  void TearDown() override {
    CloseRecordStore(store);
    std::filesystem::remove_all(file.parent_path());
  }

  // The rows.
  std::string Open() {
    EXPECT_EQ(OpenRecordStore(Utf8FromWide(file.native()).c_str(), store, 1), 1);
    EnsureSchema(store.Get());
    return CompactText(FetchBlockItems(store, nullptr));
  }

  const std::filesystem::path file =
      std::filesystem::temp_directory_path() /
      (L"ostrell store \u00E9\u4E2D" + std::to_wstring(GetCurrentProcessId())) / L"items.db";
  Connection store;
};

TEST_F(RecordStoreWinTest, DamagedFileIsReplaced) {
  CloseRecordStore(store);
  ASSERT_EQ(std::filesystem::file_size(file) % 4096, 0);
  ASSERT_TRUE(std::ofstream(file, std::ios::binary) << std::string(5000, 'x') << std::flush);
  EXPECT_EQ(Open(), "");
  EXPECT_EQ(std::filesystem::file_size(file) % 4096, 0);
}

TEST_F(RecordStoreWinTest, FileLockedByAnotherConnectionStays) {
  Connection other = std::move(store);
  for (const char* sql : {"PRAGMA journal_mode=DELETE", "BEGIN EXCLUSIVE"}) {
    ASSERT_EQ(sqlite3_exec(other.Get(), sql, nullptr, nullptr, nullptr), SQLITE_OK) << sql;
  }
  EXPECT_EQ(Open(), "");
  CloseRecordStore(other);
  EXPECT_EQ(Open(), kOneRow);
}

}  // namespace
}  // namespace ostrell
