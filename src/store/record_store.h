#pragma once

#include <cstdint>
#include <functional>

#include "base/json.h"
#include "store/connection.h"
#include "store/guarded_vfs.h"

namespace ostrell {

// The database in which the product's service keeps what its pop-up blocker has blocked. The
// service writes it at the same time: open it, ensure its schema (schema.h), fetch, close.

// How long a call waits for a database that another connection has locked.
inline constexpr int kBusyTimeoutMilliseconds = 60000;

// How long the check at the opening may work, and again all that is done with the connection
// afterwards; waiting for locks does not count.
inline constexpr int64_t kMaxWorkMilliseconds = 60000;

// Opens the database, which is made when it is missing and its folder exists, for write-ahead
// logging. 1, and the caller owns `handle`; or 0, and it is empty: for no path or an empty one, and
// when SQLite does not open the file. What `handle` held before is closed. `path` is UTF-8.
//
// The file and those beside it may be anybody's: no other file is opened or deleted (GuardedVfs),
// and memory and sizes are bounded (limits.h).
//
// A damaged database is deleted with all its rows, without its journals, and replaced by an empty
// one. Damaged is what two checks in a row find fault with, or cannot begin because the file is no
// database or its schema does not read. Of a database that could not be checked through nothing is
// known: locked by someone else to the end of the time-out, without rights, without memory, behind
// an I/O error, out of time, with a journal that belongs to several databases, with values beyond
// the limits or with functions that SQLite lacks. It opens like a sound one but only for reading:
// on its connection nothing can be made, changed or dropped.
int32_t OpenRecordStore(const char* path, Connection& handle,
                        int busyTimeout = kBusyTimeoutMilliseconds,
                        MonotonicClock clock = SteadyMilliseconds);

void CloseRecordStore(Connection& handle);

// 1 when the check found no fault, and when it broke off before it found one; 0 when the database
// is damaged, the check could not begin or could not read all pages.
int QuickCheck(sqlite3* db);

// Rows that are fetched, and bytes of text that their documents may have together.
inline constexpr size_t kMaxBlockItems = 1000000;
inline constexpr size_t kMaxDetailBytes = size_t{256} << 20;

struct BlockItem {
  int64_t id;
  int64_t ts;
  // Nothing for NULL, for what is no JSON array or object, and for one of too many elements
  // (bounded_json.h).
  JsonOwner detail;
};

// Hands out the rows that a query (block_item_query.h) finds, one at a time, so that no more than
// one is held. None when the query is refused or the connection is closed. An error ends the rows;
// one whose "detail" is longer than kLongestValue is such an error. The first row beyond
// kMaxBlockItems or kMaxDetailBytes and all behind it are left out: returns how many. Nothing else
// runs on the connection meanwhile.
uint64_t FetchBlockItems(const Connection& handle, const json_t* query,
                         const std::function<void(const BlockItem&)>& take);

}  // namespace ostrell
