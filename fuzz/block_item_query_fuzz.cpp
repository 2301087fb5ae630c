#include <algorithm>
#include <string>

#include "base/json.h"
#include "fuzz/fuzz_target.h"
#include "store/block_item_query.h"
#include "store/record_store.h"
#include "store/schema.h"

namespace ostrell {
namespace {

// A database of two rows that lives as long as the process.
Connection MakeDatabase() {
  Connection made;
  Require(OpenRecordStore(":memory:", made) == 1);
  // A column may be any expression of SQL: it must not ask for gigabytes.
  sqlite3_limit(made.Get(), SQLITE_LIMIT_LENGTH, 1 << 20);
  Require(EnsureSchema(made.Get()) == 1);
  constexpr const char* kRows =
      "INSERT INTO BlockItemLog(ts,detail) VALUES(5,'{\"a\":1}'),(7,'no json')";
  Require(ExecBound(made.Get(), kRows, -1, "", {}) == 1);
  return made;
}

// As many marks as values, and nothing else that SQLite would take for a parameter.
bool HasPlainMarks(const BlockItemQuery& query) {
  return std::ranges::count(query.text, '?') == std::ssize(query.values) &&
         query.text.find_first_of(":@$#") == std::string::npos;
}

}  // namespace

void CheckInput(std::string_view input) {
  static const Connection database = MakeDatabase();
  const JsonOwner document(json_loadb(input.data(), input.size(), JSON_DECODE_ANY, nullptr));
  const auto query = ComposeBlockItemQuery(document.Get());
  const Statement statement = BuildBlockItemQuery(database.Get(), document.Get());
  bool hasRows = false;
  FetchBlockItems(database, document.Get(), [&hasRows](const BlockItem&) { hasRows = true; });
  Require(!query || query->text.size() <= kMaxStatementBytes);
  Require(!statement || query);
  Require(!statement || !HasPlainMarks(*query) ||
          sqlite3_bind_parameter_count(statement.Get()) == std::ssize(query->values));
  Require(!hasRows || statement);
}

}  // namespace ostrell
