#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/json.h"
#include "store/statement.h"

namespace ostrell {

// A query of the pop-up block table is described by a JSON object, all of whose keys may be
// missing:
//   "c"  conditions, all of which hold: an array of objects with "n" (column), "c" (comparison) and
//        "v" (operand). Comparisons are "=", "<>", "<", "<=", ">", ">=", "><" (from the operand's
//        "l" to its "r", both included), and in any letter case "LIKE" and "IN" (one of an array).
//   "o"  order: an object, or an array of objects, with "n" (column) and "t" ("ASC", "DESC")
//   "p"  paging: "s" (rows of a page, above 0), and "index" (first row) or "c" (page, from 0)
// Columns and directions are written into the statement as they stand.

// The longest text of a statement, in bytes.
inline constexpr size_t kMaxStatementBytes = 4095;

struct BlockItemQuery {
  std::string text;
  std::vector<JsonOwner> values;  // one for each "?" that a comparison wrote, in that order
};

// The statement for a description. Nothing when a part is of the wrong type or lacks a member, when
// a comparison that begins with "=", ">" or "<" is unknown, when a paging number or the first row
// does not fit 32 bits, or when the text would be longer than kMaxStatementBytes. An order of one
// column is cut to 1023 bytes. Any other unknown comparison leaves its condition half written, and
// an empty "c" or "IN" leaves its keyword: SQLite then refuses the statement. No description, or
// one that is no object, reads every row.
std::optional<BlockItemQuery> ComposeBlockItemQuery(const json_t* query);

// That statement, prepared on an open connection and its values bound. Nothing when there is no
// text, SQLite refuses it, or a value is neither text nor an integer. Text is not copied: `query`
// must outlive the statement.
Statement BuildBlockItemQuery(sqlite3* db, const json_t* query);

}  // namespace ostrell
