#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <variant>

#include "base/owner.h"

namespace ostrell {

// A prepared statement; it goes before its connection does.
using Statement = ClosedBy<sqlite3_stmt*, &sqlite3_finalize>;

// The first statement of `sql`, which has `length` bytes, or with -1 ends at its terminator.
// Nothing when SQLite refuses it, and sqlite3_errcode then tells why; nothing for a text without a
// statement, too.
Statement Prepare(sqlite3* db, const char* sql, int length = -1);

using BindArgument = std::variant<int64_t, int32_t, const char*, const void*>;

// Binds the parameters from number 1 on, one for each letter of `format`:
//   I  int64_t                  64-bit integer
//   i  int32_t                  32-bit integer
//   s  const char*, int32_t     text and its length in bytes, or -1 when it is terminated
//   b  const void*, int32_t     blob and its length in bytes
//   N                           NULL
// Text and blob are not copied: they must live as long as the statement. SQLITE_OK, or the result
// code of the first letter that failed, behind which nothing is bound. An unknown letter, and one
// whose arguments are missing, of another kind or a blob of negative length, is SQLITE_ERROR.
// Arguments left over are ignored.
int BindArgs(sqlite3_stmt* statement, std::string_view format,
             std::initializer_list<BindArgument> arguments);

// Prepares `sql` as Prepare does, binds as BindArgs does, and runs one step. 1 when that step ended
// the statement, else 0: a statement that has a row to give has not ended.
int ExecBound(sqlite3* db, const char* sql, int length, std::string_view format,
              std::initializer_list<BindArgument> arguments);

// Whether a column of the current row is exactly this text; NULL is none. Nothing when there was no
// memory to tell.
std::optional<bool> ColumnEquals(sqlite3_stmt* row, int column, std::string_view text);

}  // namespace ostrell
