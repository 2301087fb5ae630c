#include "devkit/report_server/request_summary.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <map>

#include "devkit/report_server/identity_check.h"

namespace ostrell {
namespace {

// A member of an item in the form that a query has.
std::string AsQueryValue(const json_t* value) {
  return json_is_integer(value)  ? fmt::format("{}", json_integer_value(value))
         : json_is_string(value) ? json_string_value(value)
                                 : "";
}

// What the server found in the body, or the fault that it was told to commit.
std::string Remark(const json_t* line) {
  const std::string fault = TextOf(line, "fault");
  if (!fault.empty()) {
    return "  fault: " + fault;
  }
  if (TextOf(line, "method") != "PUT") {
    return "";
  }
  const std::string json = TextOf(line, "json");
  return fmt::format("  digest {}, zlib {}{}", TextOf(line, "digest"), TextOf(line, "zlib"),
                     json == "none" ? "" : ", JSON " + json);
}

// Values that rc1 has said already are only named.
void PrintQuery(const json_t* line, const json_t* machineInformation) {
  std::string repeated;
  const char* key = nullptr;
  json_t* value = nullptr;
  json_object_foreach(json_object_get(const_cast<json_t*>(line), "query"), key, value) {
    if (json_equal(value, json_object_get(machineInformation, key)) != 0) {
      repeated.append(" ").append(key);
    } else {
      fmt::print("           {:<6} {}\n", key, json_string_value(value));
    }
  }
  if (!repeated.empty()) {
    fmt::print("           as rc1{}\n", repeated);
  }
}

// Prints only what is wrong; true when nothing is.
bool PrintIdentity(const json_t* line, const json_t* machineInformation) {
  const std::string wrong = WrongIdentity(line, machineInformation);
  if (!wrong.empty()) {
    fmt::print("           WRONG: {}\n", wrong);
  }
  return wrong.empty();
}

std::filesystem::path BodyFile(const json_t* line, const std::filesystem::path& store) {
  return store / fmt::format("{:04}.body", json_integer_value(json_object_get(line, "number")));
}

// "" or what is wrong with the client fields of an item.
std::string CheckClientFields(const json_t* item, const json_t* machineInformation) {
  constexpr std::array kFields = {"u", "c", "v", "d", "s", "x", "ma", "mi", "bu", "re"};
  for (const char* field : kFields) {
    const std::string value = AsQueryValue(json_object_get(item, field));
    const char* expected = json_string_value(json_object_get(machineInformation, field));
    if (value.empty() || (expected != nullptr && value != expected)) {
      return fmt::format("{} is \"{}\"", field, value);
    }
  }
  return json_is_integer(json_object_get(item, "r")) ? "" : "r is missing";
}

// False when a client field of an item is missing or wrong.
bool PrintClientFields(const json_t* items, const json_t* machineInformation) {
  std::string wrong;
  size_t index = 0;
  const json_t* item = nullptr;
  json_array_foreach(items, index, item) {
    if (const std::string why = CheckClientFields(item, machineInformation); !why.empty()) {
      wrong = fmt::format("item {}: {}", index, why);
    }
  }
  fmt::print("           fields     {}\n", wrong.empty() ? "all eleven in every item" : wrong);
  return wrong.empty();
}

struct NumbersInOrder {
  bool operator()(const std::string& left, const std::string& right) const {
    return Key(left) < Key(right);
  }
  static std::pair<size_t, std::string_view> Key(std::string_view text) {
    const bool isNumber = text.find_first_not_of("0123456789") == std::string_view::npos;
    return {isNumber ? text.size() : 0, text};
  }
};

using Counts = std::map<std::string, int64_t, NumbersInOrder>;

// How many items have which value of a member.
Counts CountsOf(const json_t* items, const char* member) {
  Counts counts;
  size_t index = 0;
  const json_t* item = nullptr;
  json_array_foreach(items, index, item) {
    if (const json_t* const value = json_object_get(item, member); value != nullptr) {
      ++counts[AsQueryValue(value)];
    }
  }
  return counts;
}

// What of the counts is not as `wanted` has it; empty when nothing is.
std::string Differences(Counts counts, json_t* wanted) {
  std::string text;
  const char* value = nullptr;
  json_t* number = nullptr;
  json_object_foreach(wanted, value, number) {
    const int64_t count = counts[value];
    if (json_is_null(number) ? count == 0 : count != json_integer_value(number)) {
      text += fmt::format(" {} ({}), not ({})", value, count,
                          json_is_null(number) ? "some" : AsQueryValue(number));
    }
    counts.erase(value);
  }
  for (const auto& [other, count] : counts) {
    text += fmt::format(" {} ({}), not (0)", other, count);
  }
  return text;
}

// False when it is to be judged and differs.
bool PrintCounts(const json_t* items, const char* member, json_t* wanted, bool isJudged) {
  const Counts counts = CountsOf(items, member);
  if (!counts.empty()) {
    fmt::print("           {}:", member);
    for (const auto& [value, count] : counts) {
      fmt::print(" {}{}", value, count == 1 ? "" : fmt::format(" ({})", count));
    }
    fmt::print("\n");
  }
  const std::string differences = isJudged ? Differences(counts, wanted) : "";
  if (!differences.empty()) {
    fmt::print("           WRONG {}:{}\n", member, differences);
  }
  return differences.empty();
}

// What is to be said of an upload.
struct Judged {
  bool isSound = true;     // not an rc7 whose client fields are wrong
  bool isExpected = true;  // its items are those that were expected
};

// What an upload holds.
Judged PrintBody(const json_t* line, const std::filesystem::path& store,
                 const json_t* machineInformation, const ExpectedRun& expected) {
  const std::filesystem::path body = BodyFile(line, store);
  fmt::print("           body   {}\n", body.string());
  const std::string report = TextOf(line, "report");
  const json_t* const holds = expected.HoldsOf(report);
  if (holds == nullptr) {
    return {};
  }
  const JsonOwner items(json_load_file(body.c_str(), 0, nullptr));
  Judged judged;
  const char* member = nullptr;
  json_t* wanted = nullptr;
  json_object_foreach(const_cast<json_t*>(holds), member, wanted) {
    judged.isExpected =
        PrintCounts(items.Get(), member, wanted, expected.IsFirst(report)) && judged.isExpected;
  }
  judged.isSound = report != "rc7" || PrintClientFields(items.Get(), machineInformation);
  return judged;
}

void PrintLine(const json_t* line) {
  const std::string target = TextOf(line, "target");
  fmt::print("{:<10} {:<4} {:<18} {:>6} {:>8} {:>9} {:>6}{}\n", TextOf(line, "report"),
             TextOf(line, "method"), target.substr(0, target.find('?')), NumberOf(line, "status"),
             NumberOf(line, "packed"), NumberOf(line, "unpacked"), NumberOf(line, "items"),
             Remark(line));
}

}  // namespace

std::vector<JsonOwner> LoadRequests(const std::filesystem::path& store, size_t after) {
  std::vector<JsonOwner> requests;
  std::ifstream lines(store / "requests.jsonl");
  size_t count = 0;
  for (std::string text; std::getline(lines, text);) {
    JsonOwner line(json_loads(text.c_str(), JSON_ALLOW_NUL, nullptr));
    if (++count > after && line) {
      requests.push_back(std::move(line));
    }
  }
  return requests;
}

std::string TextOf(const json_t* line, const char* member) {
  return std::string(TextMember(line, member).value_or(""));
}

std::string NumberOf(const json_t* line, const char* member) {
  const auto number = Integer64Member(line, member);
  return number ? fmt::format("{}", *number) : "-";
}

std::string QueryValueOf(const json_t* line, const char* name) {
  return TextOf(json_object_get(line, "query"), name);
}

bool HasArrived(const json_t* line) {
  if (TextOf(line, "report") == "rc1") {
    return NumberOf(line, "status") == "200";
  }
  return TextOf(line, "method") == "PUT" && TextOf(line, "digest") == "ok" &&
         TextOf(line, "zlib") == "ok" && TextOf(line, "json") != "damaged";
}

ReportVerdict PrintRequests(const std::vector<JsonOwner>& requests,
                            const std::filesystem::path& store, const ExpectedRun& expected) {
  fmt::print("{:<10} {:<23} {:>6} {:>8} {:>9} {:>6}\n", "report", "request", "status", "packed",
             "unpacked", "items");
  const auto first = std::find_if(requests.begin(), requests.end(), [](const JsonOwner& line) {
    return TextOf(line.Get(), "report") == "rc1";
  });
  // That of the same run; what comes before the first one is held against it, too.
  const json_t* machineInformation =
      first != requests.end() ? json_object_get(first->Get(), "query") : nullptr;
  ReportVerdict verdict;
  for (const JsonOwner& line : requests) {
    const std::string report = TextOf(line.Get(), "report");
    if (report == "rc1") {
      machineInformation = json_object_get(line.Get(), "query");
    }
    PrintLine(line.Get());
    bool isSound = HasArrived(line.Get());
    if (TextOf(line.Get(), "method") == "PUT") {
      const Judged judged = PrintBody(line.Get(), store, machineInformation, expected);
      isSound = judged.isSound && isSound;
      if (!judged.isExpected) {
        verdict.differing.insert(report);
      }
    } else {
      PrintQuery(line.Get(), report == "rc1" ? nullptr : machineInformation);
      if (!report.empty() && !PrintIdentity(line.Get(), machineInformation)) {
        verdict.misnaming.insert(report);
      }
    }
    if (isSound) {
      verdict.arrived.insert(report);
    }
  }
  return verdict;
}

}  // namespace ostrell
