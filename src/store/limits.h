#pragma once

#include <sqlite3.h>

#include <cstdint>

namespace ostrell {

// What a foreign database may cost. All of it is far above what the product's table needs.

// What all of SQLite in this process may allocate; beyond it SQLite reports a lack of memory.
inline constexpr int64_t kMaxSqliteMemory = int64_t{64} << 20;

// The longest text, blob or row that is read, in bytes: of the product's rows, and while a database
// is checked, where other tables' constraints are evaluated. A longer one ends its statement with
// SQLITE_TOOBIG.
inline constexpr int kLongestValue = 16 << 20;
inline constexpr int kLongestCheckedValue = 32 << 10;

// Readies an open connection for a foreign database: values as short as while it is checked, no
// other databases, triggers or views, no writing past SQLite's own interfaces, and none of the
// functions that cost more than their arguments' length. A statement that needs what is refused
// ends with an error. False when SQLite has no memory left for it; the connection must not be used
// then.
bool RestrictConnection(sqlite3* db);

}  // namespace ostrell
