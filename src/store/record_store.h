#pragma once

#include <cstdint>

#include "base/json.h"
#include "store/connection.h"

namespace ostrell {

// The database in which the product's service keeps what its pop-up blocker has blocked. The
// service writes it at the same time: open it, ensure its schema (schema.h), fetch, close.

// How long a call waits for a database that another connection has locked.
inline constexpr int kBusyTimeoutMilliseconds = 60000;

// Opens the database, which is made when it is missing and its folder exists, for write-ahead
// logging. 1, and the caller owns `handle`; or 0, and it is empty: for no path or an empty one, and
// when SQLite does not open the file. What `handle` held before is closed. `path` is UTF-8.
//
// A damaged database is deleted with all its rows, without its journals, and replaced by an empty
// one. Damaged is what QuickCheck finds fault with, or cannot even begin to check: no database, or
// one whose schema does not read. A database that only cannot be read now is not damaged and opens
// like a sound one: locked by someone else to the end of the time-out, without rights, without
// memory, interrupted, or behind an I/O error.
int32_t OpenRecordStore(const char* path, Connection& handle,
                        int busyTimeout = kBusyTimeoutMilliseconds);

void CloseRecordStore(Connection& handle);

// 1 when the database is sound, 0 when it is damaged or the check could not begin. A check that
// breaks off later found what it had found until then.
int QuickCheck(sqlite3* db);

// The rows that a query (block_item_query.h) finds, as an array of at least one object, each with
// "id", "ts" and the document "detail", which is left out when it is NULL or no JSON array or
// object. Nothing when there is no row, the query is refused or the connection is closed. Rows read
// before an error are kept. Nothing else runs on the connection meanwhile.
JsonOwner FetchBlockItems(const Connection& handle, json_t* query);

}  // namespace ostrell
