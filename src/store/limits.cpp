#include "store/limits.h"

#include <algorithm>
#include <utility>

namespace ostrell {
namespace {

// The limits of SQLite's parser stay as they are: a schema that goes beyond one reads as damaged,
// and a longer text of it than kLongestCheckedValue is not read at all.
constexpr std::pair<int, int> kLimits[] = {{SQLITE_LIMIT_LENGTH, kLongestCheckedValue},
                                           {SQLITE_LIMIT_SQL_LENGTH, 1 << 20},
                                           {SQLITE_LIMIT_VDBE_OP, 100000},
                                           {SQLITE_LIMIT_ATTACHED, 0},
                                           {SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 250},
                                           {SQLITE_LIMIT_TRIGGER_DEPTH, 0},
                                           {SQLITE_LIMIT_WORKER_THREADS, 0}};

// The schema stays "trusted": no functions but SQLite's own are there to be abused, and without
// that trust SQLite 3.40 refuses its own JSON functions and takes a schema that uses them for
// damaged.
constexpr std::pair<int, int> kSwitches[] = {{SQLITE_DBCONFIG_DEFENSIVE, 1},
                                             {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
                                             {SQLITE_DBCONFIG_ENABLE_VIEW, 0}};

// Functions whose work grows with the product of two lengths, or with a number whatever the limit
// of lengths: no look at the clock cuts them short.
constexpr std::pair<const char*, int> kCostlyFunctions[] = {
    {"format", -1}, {"instr", 2},   {"json_patch", 2}, {"ltrim", 2},
    {"printf", -1}, {"replace", 3}, {"rtrim", 2},      {"trim", 2}};

bool Refuse(sqlite3* db, const char* function, int arguments) {
  return sqlite3_create_function_v2(
             db, function, arguments, SQLITE_UTF8, nullptr,
             [](sqlite3_context* call, int /*count*/, sqlite3_value** /*values*/) {
               sqlite3_result_error_code(call, SQLITE_TOOBIG);
             },
             nullptr, nullptr, nullptr) == SQLITE_OK;
}

}  // namespace

bool RestrictConnection(sqlite3* db) {
  sqlite3_hard_heap_limit64(kMaxSqliteMemory);
  for (const auto& [limit, value] : kLimits) {
    sqlite3_limit(db, limit, value);
  }
  return std::ranges::all_of(kSwitches,
                             [db](const auto& part) {
                               return sqlite3_db_config(db, part.first, part.second, nullptr) ==
                                      SQLITE_OK;
                             }) &&
         std::ranges::all_of(
             kCostlyFunctions,
             [db](const auto& function) { return Refuse(db, function.first, function.second); }) &&
         sqlite3_exec(db, "PRAGMA cell_size_check=ON", nullptr, nullptr, nullptr) == SQLITE_OK;
}

}  // namespace ostrell
