#include <algorithm>
#include <string>

#include "base/json.h"
#include "fuzz/fuzz_target.h"
#include "store/block_item_query.h"
#include "store/record_store.h"
#include "store/schema.h"

namespace {

// A database of two rows that lives as long as the process.
const ostrell::Connection& Database() {
  static const ostrell::Connection database = [] {
    ostrell::Connection made;
    ostrell::Require(ostrell::OpenRecordStore(":memory:", made) == 1);
    // A column may be any expression of SQL: it must not ask for gigabytes.
    sqlite3_limit(made.Get(), SQLITE_LIMIT_LENGTH, 1 << 20);
    ostrell::Require(ostrell::EnsureSchema(made.Get()) == 1);
    ostrell::Require(ostrell::ExecBound(made.Get(),
                                        "INSERT INTO BlockItemLog(ts,detail) "
                                        "VALUES(5,'{\"a\":1}'),(7,'no json')",
                                        -1, "", {}) == 1);
    return made;
  }();
  return database;
}

// As many marks as values, and nothing else that SQLite would take for a parameter.
bool HasPlainMarks(const ostrell::BlockItemQuery& query) {
  return std::ranges::count(query.text, '?') == std::ssize(query.values) &&
         query.text.find_first_of(":@$#") == std::string::npos;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace ostrell;
  const JsonOwner document(
      json_loadb(reinterpret_cast<const char*>(data), size, JSON_DECODE_ANY, nullptr));
  const auto query = ComposeBlockItemQuery(document.Get());
  const Statement statement = BuildBlockItemQuery(Database().Get(), document.Get());
  const JsonOwner rows = FetchBlockItems(Database(), document.Get());
  Require(!query || query->text.size() <= kMaxStatementBytes);
  Require(!statement || query);
  Require(!statement || !HasPlainMarks(*query) ||
          sqlite3_bind_parameter_count(statement.Get()) == std::ssize(query->values));
  Require(!rows || (statement && json_array_size(rows.Get()) > 0));
  return 0;
}
