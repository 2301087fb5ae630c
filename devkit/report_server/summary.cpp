// Prints what a report server kept, for people: report_summary STORE AFTER REPORT...
//
// STORE is the server's folder, AFTER the number of lines of requests.jsonl that belong to earlier
// runs. Ends with 1 unless each REPORT arrived: rc1 by a request that was answered with 200, any
// other by a PUT with sound digest, stream and JSON, and rc7 with its client fields in every item,
// equal to those of rc1 where that was sent in the same run.
#include <fmt/core.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "base/json.h"

namespace ostrell {
namespace {

std::string Text(const json_t* line, const char* member) {
  const char* text = json_string_value(json_object_get(line, member));
  return text != nullptr ? text : "";
}

std::string Number(const json_t* line, const char* member) {
  const json_t* value = json_object_get(line, member);
  return json_is_integer(value) ? fmt::format("{}", json_integer_value(value)) : "-";
}

bool HasArrived(const json_t* line) {
  const bool isOk = json_integer_value(json_object_get(line, "status")) == 200;
  if (Text(line, "report") == "rc1") {
    return isOk;
  }
  return Text(line, "method") == "PUT" && Text(line, "digest") == "ok" &&
         Text(line, "zlib") == "ok" && Text(line, "json") != "damaged";
}

void PrintQuery(const json_t* line) {
  const char* key = nullptr;
  json_t* value = nullptr;
  json_object_foreach(json_object_get(const_cast<json_t*>(line), "query"), key, value) {
    fmt::print("           {:<6} {}\n", key, json_string_value(value));
  }
}

// What the server found in the body, or the fault that it was told to commit.
std::string Remark(const json_t* line) {
  const std::string fault = Text(line, "fault");
  if (!fault.empty()) {
    return "  fault: " + fault;
  }
  return Text(line, "method") == "PUT"
             ? fmt::format("  digest {}, zlib {}, JSON {}", Text(line, "digest"),
                           Text(line, "zlib"), Text(line, "json"))
             : "";
}

// A member of an item in the form that a query has.
std::string AsQueryValue(const json_t* value) {
  return json_is_integer(value)  ? fmt::format("{}", json_integer_value(value))
         : json_is_string(value) ? json_string_value(value)
                                 : "";
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

// Prints the unified report's items by type; false when a client field of one is missing or wrong.
bool PrintItems(const std::filesystem::path& body, const json_t* machineInformation) {
  const JsonOwner items(json_load_file(body.c_str(), 0, nullptr));
  std::map<std::string, size_t> counts;
  std::string wrong;
  size_t index = 0;
  json_t* item = nullptr;
  json_array_foreach(items.Get(), index, item) {
    ++counts[Text(item, "report_type")];
    if (const std::string why = CheckClientFields(item, machineInformation); !why.empty()) {
      wrong = fmt::format("item {}: {}", index, why);
    }
  }
  for (const auto& [type, count] : counts) {
    fmt::print("           {:<10} {}\n", type, count);
  }
  fmt::print("           fields     {}\n", wrong.empty() ? "all eleven in every item" : wrong);
  return wrong.empty();
}

std::filesystem::path BodyFile(const json_t* line, const std::filesystem::path& store) {
  return store / fmt::format("{:04}.body", json_integer_value(json_object_get(line, "number")));
}

void PrintRequest(const json_t* line, const std::filesystem::path& store) {
  const std::string target = Text(line, "target");
  fmt::print("{:<10} {:<4} {:<18} {:>6} {:>8} {:>9} {:>6}{}\n", Text(line, "report"),
             Text(line, "method"), target.substr(0, target.find('?')), Number(line, "status"),
             Number(line, "packed"), Number(line, "unpacked"), Number(line, "items"), Remark(line));
  if (Text(line, "method") == "PUT") {
    fmt::print("           body       {}\n", BodyFile(line, store).string());
  } else {
    PrintQuery(line);
  }
}

int Summarise(const std::filesystem::path& store, size_t after, std::set<std::string> due) {
  fmt::print("{:<10} {:<23} {:>6} {:>8} {:>9} {:>6}\n", "report", "request", "status", "packed",
             "unpacked", "items");
  std::ifstream lines(store / "requests.jsonl");
  size_t count = 0;
  JsonOwner machineInformation;
  for (std::string text; std::getline(lines, text);) {
    const JsonOwner line(json_loads(text.c_str(), JSON_ALLOW_NUL, nullptr));
    if (++count > after && line) {
      PrintRequest(line.Get(), store);
      const std::string report = Text(line.Get(), "report");
      bool arrived = HasArrived(line.Get());
      if (report == "rc1") {
        machineInformation.Reset(json_incref(json_object_get(line.Get(), "query")));
      } else if (report == "rc7" && arrived) {
        arrived = PrintItems(BodyFile(line.Get(), store), machineInformation.Get());
      }
      if (arrived) {
        due.erase(report);
      }
    }
  }
  fmt::print("\nrequests   {} in {}\n", count - std::min(after, count), store.string());
  for (const std::string& report : due) {
    fmt::print("missing    {} was due and did not arrive\n", report);
  }
  return due.empty() ? 0 : 1;
}

}  // namespace
}  // namespace ostrell

// NOLINTNEXTLINE(bugprone-exception-escape): what is thrown ends a tool like this.
int main(int argc, char** argv) {
  if (argc < 3) {
    fmt::print(stderr, "usage: report_summary STORE AFTER REPORT...\n");
    return 2;
  }
  return ostrell::Summarise(argv[1], std::strtoul(argv[2], nullptr, 10), {argv + 3, argv + argc});
}
