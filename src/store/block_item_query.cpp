#include "store/block_item_query.h"

#include <algorithm>
#include <utility>

#include "base/bounded_text.h"
#include "base/text.h"

namespace ostrell {
namespace {

using Piece = BoundedText<char, 1024>;

struct Comparison {
  std::string_view name;
  std::string_view text;
};

constexpr Comparison kSingleValueComparisons[] = {
    {"=", " = ?)"},   {">", " > ?)"},   {">=", " >= ?)"},     {"<", " < ?)"},
    {"<=", " <= ?)"}, {"<>", " != ?)"}, {"LIKE", " LIKE ?)"},
};

void Gather(json_t* value, BlockItemQuery& query) {
  JsonOwner held(json_incref(value));  // the list may not grow
  query.values.push_back(std::move(held));
}

bool AppendRange(const json_t* operand, BlockItemQuery& query) {
  json_t* const left = json_object_get(operand, "l");
  json_t* const right = json_object_get(operand, "r");
  if (left == nullptr || right == nullptr) {
    return false;
  }
  query.text += " BETWEEN ? AND ?)";
  Gather(left, query);
  Gather(right, query);
  return true;
}

bool AppendList(const json_t* operand, BlockItemQuery& query) {
  if (!json_is_array(operand)) {
    return false;
  }
  query.text += " IN (";
  const char* mark = "?";
  for (json_t* const value : Elements(operand)) {
    query.text += std::exchange(mark, ",?");
    Gather(value, query);
  }
  query.text += "))";
  return true;
}

bool AppendComparison(std::string_view name, json_t* operand, BlockItemQuery& query) {
  if (name == "><") {
    return AppendRange(operand, query);
  }
  if (EqualsIgnoringCase(name, "IN")) {
    return AppendList(operand, query);
  }
  const auto* const known = std::ranges::find_if(
      kSingleValueComparisons,
      [name](const Comparison& comparison) { return EqualsIgnoringCase(name, comparison.name); });
  if (known == std::end(kSingleValueComparisons)) {
    return name.find_first_of("=><") != 0;
  }
  query.text += known->text;
  Gather(operand, query);
  return true;
}

bool AppendConditions(const json_t* conditions, BlockItemQuery& query) {
  if (!json_is_array(conditions)) {
    return conditions == nullptr;
  }
  query.text += " WHERE ";
  const char* opening = " (";
  for (json_t* const condition : Elements(conditions)) {
    const char* column = nullptr;
    const char* comparison = nullptr;
    json_t* operand = nullptr;
    if (json_unpack(condition, "{s:s,s:s,s:o}", "n", &column, "c", &comparison, "v", &operand) !=
        0) {
      return false;
    }
    query.text += std::exchange(opening, " AND (");
    query.text += column;
    if (!AppendComparison(comparison, operand, query)) {
      return false;
    }
  }
  return true;
}

// The column and its direction.
using OrderFormat = PrintFormat<char, const char*, const char*>;

bool AppendColumnOrder(json_t* order, OrderFormat format, std::string& text) {
  const char* column = nullptr;
  const char* direction = nullptr;
  if (json_unpack(order, "{s:s,s:s}", "n", &column, "t", &direction) != 0) {
    return false;
  }
  text += Piece::Print(format, column, direction).View();
  return true;
}

bool AppendOrder(json_t* order, std::string& text) {
  constexpr OrderFormat kFirst("%s %s");
  constexpr OrderFormat kNext(", %s %s");
  if (order == nullptr) {
    return true;
  }
  text += " ORDER BY ";
  if (!json_is_array(order)) {
    return AppendColumnOrder(order, kFirst, text);
  }
  OrderFormat format = kFirst;
  for (json_t* const column : Elements(order)) {
    if (!AppendColumnOrder(column, std::exchange(format, kNext), text)) {
      return false;
    }
  }
  return true;
}

// -1 when missing; nothing when it is no integer of 32 bits.
std::optional<int32_t> PagingNumber(const json_t* paging, const char* key) {
  if (json_object_get(paging, key) == nullptr) {
    return -1;
  }
  const auto number = Integer64Member(paging, key);
  return number && std::in_range<int32_t>(*number) ? std::optional(static_cast<int32_t>(*number))
                                                   : std::nullopt;
}

bool AppendPaging(const json_t* paging, std::string& text) {
  if (!json_is_object(paging)) {
    return paging == nullptr;
  }
  const auto index = PagingNumber(paging, "index");
  const auto size = PagingNumber(paging, "s");
  const auto page = PagingNumber(paging, "c");
  if (!index || !size || !page || *size <= 0) {
    return false;
  }
  const int64_t offset = *index >= 0 ? *index : int64_t{*page} * *size;
  if (offset < 0 || !std::in_range<int32_t>(offset)) {
    return false;
  }
  text += Piece::Print(" LIMIT %d, %d ", offset, *size).View();
  return true;
}

bool BindValue(sqlite3_stmt* statement, int parameter, const json_t* value) {
  int result = SQLITE_MISMATCH;
  if (json_is_string(value)) {
    result = sqlite3_bind_text(statement, parameter, json_string_value(value), -1, SQLITE_STATIC);
  } else if (json_is_integer(value)) {
    result = sqlite3_bind_int64(statement, parameter, json_integer_value(value));
  }
  return result == SQLITE_OK;
}

}  // namespace

std::optional<BlockItemQuery> ComposeBlockItemQuery(const json_t* query) {
  BlockItemQuery composed;
  composed.text = "SELECT id, ts, detail FROM BlockItemLog";
  const bool complete = AppendConditions(json_object_get(query, "c"), composed) &&
                        AppendOrder(json_object_get(query, "o"), composed.text) &&
                        AppendPaging(json_object_get(query, "p"), composed.text) &&
                        composed.text.size() <= kMaxStatementBytes;
  return complete ? std::optional(std::move(composed)) : std::nullopt;
}

Statement BuildBlockItemQuery(sqlite3* db, const json_t* query) {
  const auto composed = ComposeBlockItemQuery(query);
  if (!composed) {
    return {};
  }
  Statement statement =
      Prepare(db, composed->text.c_str(), static_cast<int>(composed->text.size()));
  int parameter = 0;
  const bool bound = statement && std::ranges::all_of(composed->values, [&](const auto& value) {
                       return BindValue(statement.Get(), ++parameter, value.Get());
                     });
  return bound ? std::move(statement) : Statement();
}

}  // namespace ostrell
