#include "store/record_store.h"

#include <utility>

#include "store/block_item_query.h"
#include "store/delete_file.h"
#include "store/statement.h"

namespace ostrell {
namespace {

enum class Health { kSound, kDamaged, kUnknown };

// What a check that could not begin says about the database.
Health HealthFromError(int resultCode) {
  switch (resultCode & 0xFF) {  // the primary code of an extended one
    case SQLITE_PERM:
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_NOMEM:
    case SQLITE_READONLY:
    case SQLITE_INTERRUPT:
    case SQLITE_IOERR:
    case SQLITE_FULL:
    case SQLITE_CANTOPEN:
    case SQLITE_PROTOCOL:
    case SQLITE_AUTH:
      return Health::kUnknown;
    default:
      return Health::kDamaged;
  }
}

Health CheckHealth(sqlite3* db) {
  const Statement check = Prepare(db, "PRAGMA quick_check");
  if (!check) {
    return HealthFromError(sqlite3_errcode(db));
  }
  while (sqlite3_step(check.Get()) == SQLITE_ROW) {
    if (!ColumnEquals(check.Get(), 0, "ok")) {
      return Health::kDamaged;
    }
  }
  return Health::kSound;
}

bool OpenConnection(const char* path, int busyTimeout, Connection& handle) {
  if (sqlite3_open(path, handle.Receive()) != SQLITE_OK) {
    handle.Reset();  // a failed opening gives a connection all the same
    return false;
  }
  sqlite3_busy_timeout(handle.Get(), busyTimeout);
  return true;
}

JsonOwner RowObject(sqlite3_stmt* row) {
  JsonOwner object(json_object());
  json_object_set_new(object.Get(), "id", json_integer(sqlite3_column_int64(row, 0)));
  json_object_set_new(object.Get(), "ts", json_integer(sqlite3_column_int64(row, 1)));
  const auto* const detail = reinterpret_cast<const char*>(sqlite3_column_text(row, 2));
  // NULL is no document, and jansson sets no member without a value.
  json_object_set_new(object.Get(), "detail", json_loads(detail, 0, nullptr));
  return object;
}

}  // namespace

int32_t OpenRecordStore(const char* path, Connection& handle, int busyTimeout) {
  handle.Reset();
  if (path == nullptr || *path == '\0' || !OpenConnection(path, busyTimeout, handle)) {
    return 0;
  }
  if (CheckHealth(handle.Get()) == Health::kDamaged) {
    handle.Reset();
    DeleteFileAt(path);
    if (!OpenConnection(path, busyTimeout, handle)) {
      return 0;
    }
  }
  sqlite3_exec(handle.Get(), "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
  return 1;
}

void CloseRecordStore(Connection& handle) {
  handle.Reset();
}

int QuickCheck(sqlite3* db) {
  return CheckHealth(db) == Health::kSound ? 1 : 0;
}

JsonOwner FetchBlockItems(const Connection& handle, json_t* query) {
  JsonOwner rows(handle ? json_array() : nullptr);
  if (!rows) {
    return {};
  }
  const MutexHold held = HoldMutex(handle.Get());
  const Statement statement = BuildBlockItemQuery(handle.Get(), query);
  while (statement && sqlite3_step(statement.Get()) == SQLITE_ROW) {
    json_array_append_new(rows.Get(), RowObject(statement.Get()).Release());
  }
  return UnlessEmpty(std::move(rows));
}

}  // namespace ostrell
