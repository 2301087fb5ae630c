#include "store/limits.h"

#include <gtest/gtest.h>

#include "store/record_store.h"
#include "store/statement.h"

namespace ostrell {

// What the documents promise of an open connection, as SQLite tells it.
TEST(RestrictConnection, LimitsAndSwitches) {
  Connection store;
  ASSERT_EQ(OpenRecordStore(":memory:", store), 1);
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
    int now = -1;
    EXPECT_EQ(sqlite3_db_config(store.Get(), part, -1, &now), SQLITE_OK);
    EXPECT_EQ(now, value) << part;
  }
  const Statement check = Prepare(store.Get(), "PRAGMA cell_size_check");
  ASSERT_EQ(sqlite3_step(check.Get()), SQLITE_ROW);
  EXPECT_EQ(sqlite3_column_int(check.Get(), 0), 1);
  EXPECT_EQ(sqlite3_hard_heap_limit64(-1), 67108864);
}

}  // namespace ostrell
