#include "devkit/report_server/expected_run.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

namespace ostrell {

ExpectedRun::ExpectedRun(JsonOwner expectedList, std::filesystem::path dataFolder, int64_t start)
    : list(std::move(expectedList)),
      before(std::move(dataFolder)),
      settings(json_load_file((before / "settings/ostrell.json").c_str(), 0, nullptr)),
      now(start) {}

std::string ExpectedRun::WhyNotDue(const json_t* row) const {
  const auto key = TextMember(row, "key");
  if (!key) {
    return "";
  }
  const auto needed = TextMember(row, "needs");
  if (needed && !exists(before / *needed)) {
    return fmt::format("{}: there is no {}", *key, *needed);
  }
  const int64_t past = now - json_integer_value(LastTimeOf(row));
  const int64_t least =
      Integer64Member(row, "interval").value_or(0) + (TextMember(row, "due") == ">" ? 1 : 0);
  return past >= least ? ""
                       : fmt::format("{}: recorded {} s ago, due after {} s", *key, past, least);
}

int64_t ExpectedRun::StartOf(const json_t* row) const {
  const int64_t earliest = now - Integer64Member(list.Get(), "look_back").value_or(0);
  return std::max<int64_t>(earliest, json_integer_value(LastTimeOf(row)));
}

std::set<std::string> ExpectedRun::Due() const {
  std::set<std::string> due;
  for (const json_t* row : Reports()) {
    if (WhyNotDue(row).empty()) {
      due.emplace(TextMember(row, "report").value_or(""));
    }
  }
  return due;
}

const json_t* ExpectedRun::HoldsOf(std::string_view report) const {
  return json_object_get(RowOf(report), "holds");
}

bool ExpectedRun::IsFirst(std::string_view report) const {
  return LastTimeOf(RowOf(report)) == nullptr;
}

std::vector<const json_t*> ExpectedRun::Rows(const char* member) const {
  std::vector<const json_t*> rows;
  for (const json_t* const row : Elements(json_object_get(list.Get(), member))) {
    rows.push_back(row);
  }
  return rows;
}

const json_t* ExpectedRun::RowOf(std::string_view report) const {
  const std::vector<const json_t*> rows = Reports();
  const auto found = std::find_if(rows.begin(), rows.end(), [&](const json_t* row) {
    return TextMember(row, "report") == report;
  });
  return found != rows.end() ? *found : nullptr;
}

const json_t* ExpectedRun::LastTimeOf(const json_t* row) const {
  const std::string key(TextMember(row, "key").value_or(""));
  return json_object_get(json_object_get(settings.Get(), "int64"), key.c_str());
}

}  // namespace ostrell
