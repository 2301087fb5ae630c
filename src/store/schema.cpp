#include "store/schema.h"

#include <algorithm>

#include "base/print.h"
#include "store/statement.h"

namespace ostrell {
namespace {

int Execute(sqlite3* db, const char* sql) {
  return ExecBound(db, sql, -1, "", {});
}

// Whether the connection may change nothing, see OpenRecordStore.
bool IsQueryOnly(sqlite3* db) {
  const Statement flag = Prepare(db, "PRAGMA query_only");
  return !flag || sqlite3_step(flag.Get()) != SQLITE_ROW || sqlite3_column_int(flag.Get(), 0) != 0;
}

int Recreate(sqlite3* db) {
  if (IsQueryOnly(db)) {
    return 0;
  }
  // A table that could not be dropped is found by CreateSchema.
  Execute(db, Print("DROP TABLE %s", kBlockItemSchema.name).c_str());
  return CreateSchema(db);
}

// Nothing when an index could not be looked up.
std::optional<bool> IndexesDiffer(sqlite3_stmt* lookUp) {
  for (const IndexSchema& index : kBlockItemSchema.indexes) {
    if (BindArgs(lookUp, "sss", {"index", -1, kBlockItemSchema.name, -1, index.name, -1}) !=
        SQLITE_OK) {
      return std::nullopt;
    }
    const int step = sqlite3_step(lookUp);
    if (step != SQLITE_ROW) {
      return step == SQLITE_DONE ? std::optional(true) : std::nullopt;
    }
    const auto same = ColumnEquals(lookUp, 0, index.creation);
    if (same != true) {
      return same ? std::optional(true) : std::nullopt;
    }
  }
  return false;
}

int EnsureIndexes(sqlite3* db) {
  Statement lookUp =
      Prepare(db, "SELECT sql FROM sqlite_master WHERE type=? AND tbl_name=? AND name=?");
  if (!lookUp) {
    return 0;
  }
  const bool differ = IndexesDiffer(lookUp.Get()).value_or(false);
  lookUp.Reset();  // an open statement would lock the table against its drop
  return differ ? Recreate(db) : 1;
}

}  // namespace

bool TableExists(sqlite3* db, const char* name) {
  const Statement lookUp = Prepare(db, "SELECT 1 FROM sqlite_master WHERE type=? AND name=?");
  return lookUp && BindArgs(lookUp.Get(), "ss", {"table", -1, name, -1}) == SQLITE_OK &&
         sqlite3_step(lookUp.Get()) == SQLITE_ROW;
}

int CreateSchema(sqlite3* db) {
  if (TableExists(db, kBlockItemSchema.name)) {
    return 1;
  }
  return Execute(db, kBlockItemSchema.creation) == 1 &&
                 std::ranges::all_of(
                     kBlockItemSchema.indexes,
                     [db](const auto& index) { return Execute(db, index.creation) == 1; })
             ? 1
             : 0;
}

int EnsureSchema(sqlite3* db) {
  Statement lookUp = Prepare(db, "SELECT name,sql FROM sqlite_master WHERE type=? AND tbl_name=?");
  if (!lookUp ||
      BindArgs(lookUp.Get(), "ss", {"table", -1, kBlockItemSchema.name, -1}) != SQLITE_OK) {
    return 0;
  }
  const int step = sqlite3_step(lookUp.Get());
  const auto same =
      step == SQLITE_ROW ? ColumnEquals(lookUp.Get(), 1, kBlockItemSchema.creation) : std::nullopt;
  lookUp.Reset();
  if (step == SQLITE_DONE) {
    return CreateSchema(db);
  }
  if (!same) {
    return 0;
  }
  return *same ? EnsureIndexes(db) : Recreate(db);
}

}  // namespace ostrell
