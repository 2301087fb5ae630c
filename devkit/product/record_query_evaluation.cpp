#include "devkit/product/record_query_evaluation.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ostrell {
namespace {

using Predicate = std::function<bool(json_int_t)>;

struct Condition {
  std::string column;
  Predicate isMet;
};

struct Order {
  std::string column;
  bool descends;
};

struct Query {
  std::vector<Condition> conditions;
  Order order;
};

// False unless `value` has exactly the members of the format, of its types.
template <class... Members>
bool Unpack(json_t* value, const char* format, Members... members) {
  return json_unpack_ex(value, nullptr, JSON_STRICT, format, members...) == 0;
}

Predicate RangePredicate(json_t* operand) {
  json_int_t lowest = 0;
  json_int_t highest = 0;
  if (!Unpack(operand, "{s:I, s:I}", "l", &lowest, "r", &highest)) {
    return {};
  }
  return [=](json_int_t value) { return lowest <= value && value <= highest; };
}

Predicate SetPredicate(json_t* operand) {
  if (!json_is_array(operand)) {
    return {};
  }
  std::set<json_int_t> allowed;
  size_t i = 0;
  json_t* element = nullptr;
  json_array_foreach(operand, i, element) {
    if (!json_is_integer(element)) {
      return {};
    }
    allowed.insert(json_integer_value(element));
  }
  return [allowed = std::move(allowed)](json_int_t value) { return allowed.contains(value); };
}

template <class Compare>
Predicate ComparePredicate(json_t* operand, Compare compare) {
  if (!json_is_integer(operand)) {
    return {};
  }
  return
      [=, bound = json_integer_value(operand)](json_int_t value) { return compare(value, bound); };
}

// Empty for an unknown operator, or an operand that is not of its form.
Predicate ParsePredicate(std::string_view comparison, json_t* operand) {
  if (comparison == "><") {
    return RangePredicate(operand);
  }
  if (comparison == "in") {
    return SetPredicate(operand);
  }
  if (comparison == "<") {
    return ComparePredicate(operand, std::less<>());
  }
  if (comparison == "=") {
    return ComparePredicate(operand, std::equal_to<>());
  }
  return comparison == ">" ? ComparePredicate(operand, std::greater<>()) : Predicate();
}

std::optional<Condition> ParseCondition(json_t* condition) {
  const char* comparison = nullptr;
  const char* column = nullptr;
  json_t* operand = nullptr;
  if (!Unpack(condition, "{s:s, s:s, s:o}", "c", &comparison, "n", &column, "v", &operand)) {
    return std::nullopt;
  }
  Predicate isMet = ParsePredicate(comparison, operand);
  return isMet ? std::optional(Condition{column, std::move(isMet)}) : std::nullopt;
}

std::optional<Query> ParseDescriptor(json_t* descriptor) {
  json_t* conditions = nullptr;
  const char* column = nullptr;
  const char* direction = nullptr;
  if (!Unpack(descriptor, "{s:o, s:[{s:s, s:s}]}", "c", &conditions, "o", "n", &column, "t",
              &direction) ||
      !json_is_array(conditions)) {
    return std::nullopt;
  }
  const bool descends = std::string_view(direction) == "DESC";
  if (!descends && std::string_view(direction) != "ASC") {
    return std::nullopt;
  }
  Query query{{}, {column, descends}};
  size_t i = 0;
  json_t* element = nullptr;
  json_array_foreach(conditions, i, element) {
    auto condition = ParseCondition(element);
    if (!condition) {
      return std::nullopt;
    }
    query.conditions.push_back(*std::move(condition));
  }
  return query;
}

std::optional<json_int_t> IntegerIn(json_t* record, const std::string& column) {
  const json_t* value = json_object_get(record, column.c_str());
  return json_is_integer(value) ? std::optional(json_integer_value(value)) : std::nullopt;
}

bool Meets(json_t* record, const std::vector<Condition>& conditions) {
  return std::all_of(conditions.begin(), conditions.end(), [&](const Condition& condition) {
    const auto value = IntegerIn(record, condition.column);
    return value && condition.isMet(*value);
  });
}

void Sort(std::vector<json_t*>& records, const Order& order) {
  std::stable_sort(records.begin(), records.end(), [&](json_t* left, json_t* right) {
    const auto leftValue = IntegerIn(left, order.column);
    const auto rightValue = IntegerIn(right, order.column);
    if (!leftValue || !rightValue) {
      return leftValue.has_value() && !rightValue.has_value();
    }
    return order.descends ? *leftValue > *rightValue : *leftValue < *rightValue;
  });
}

}  // namespace

JsonOwner EvaluateRecordQuery(json_t* records, json_t* descriptor) {
  const auto query = ParseDescriptor(descriptor);
  if (!query) {
    return {};
  }
  std::vector<json_t*> found;
  size_t i = 0;
  json_t* record = nullptr;
  json_array_foreach(records, i, record) {
    if (Meets(record, query->conditions)) {
      found.push_back(record);
    }
  }
  Sort(found, query->order);
  JsonOwner result(json_array());
  for (json_t* match : found) {
    if (json_array_append_new(result.Get(), json_deep_copy(match)) != 0) {
      return {};
    }
  }
  return result;
}

}  // namespace ostrell
