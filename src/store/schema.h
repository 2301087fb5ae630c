#pragma once

#include <sqlite3.h>

#include <span>

namespace ostrell {

struct IndexSchema {
  const char* name;
  const char* creation;
};

struct TableSchema {
  const char* name;
  const char* creation;
  std::span<const IndexSchema> indexes;
};

// What the product's service writes. The database keeps the creation texts as they were run, and
// they are compared byte for byte: a blank more or less is another schema.
inline constexpr IndexSchema kBlockItemIndexes[] = {
    {"idx_BlockItemLog_ts_group_item",
     "CREATE INDEX idx_BlockItemLog_ts_group_item ON BlockItemLog(ts)"}};
inline constexpr TableSchema kBlockItemSchema = {
    "BlockItemLog",
    "CREATE TABLE BlockItemLog(id INTEGER PRIMARY KEY AUTOINCREMENT, ts INTEGER, detail "
    "TEXT,iname Text)",
    kBlockItemIndexes};

// The functions below work on an open connection.

// False also when the database does not tell.
bool TableExists(sqlite3* db, const char* name);

// Makes the table and its indexes. 1 when they were made or a table of that name exists, whatever
// it is like; 0 at the first text that fails, and what was made before it stays.
int CreateSchema(sqlite3* db);

// 1 when the table is there with its schema afterwards, 0 on failure. A missing table is made. A
// table whose text, or whose index, is missing or differs is dropped with all its rows and made
// anew; one that cannot be dropped stays and counts as made. An index that could not be looked up
// counts as sound. On a connection that may only read (OpenRecordStore) nothing is dropped or made:
// what would be is a failure then.
int EnsureSchema(sqlite3* db);

}  // namespace ostrell
