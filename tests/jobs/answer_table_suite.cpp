#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "devkit/report_server/faults.h"
#include "tests/jobs/recorded_machine.h"

// The table "What each answer makes the agent do" of docs/report-protocol.md, row by row.

namespace ostrell {
namespace {

using Row = std::vector<std::string>;
constexpr auto kHeading = "| Request | Answer | Fault | What the agent does next |";

// A machine whose user submitted a file of that content, and nothing else is due.
std::string SampleOf(const std::string& content) {
  return R"({"run": "rc3", "files": {"C:\\s": {"text": ")" + content + R"(", "times": 2000}},
    "documents": {"0": [{"ts": 1795565520, "fid": -5, "detail": {"pathname": "C:\\s"}}]},
    "last": {"rpttm_fp": 1795565520, "rpttm_qf": 1795565520}})";
}

// Machines that have something of one report to send.
const std::map<std::string, std::string> kMachines = {
    {"rc1", R"({"run": "rc1"})"},
    {"rc2", R"({"run": "rc2", "documents": {"0": [{"ts": 1795565520, "fid": 5, "detail": {}}]}})"},
    {"rc4", R"({"run": "rc4", "files": {"C:\\Corvane\\data\\tallyx5.dat":
                {"content": {"text": "\u0000", "times": 16}}}})"},
    {"rc5", R"({"run": "rc5", "popups": [[1795565520, {"product_name": "a"}]]})"},
    {"rc7", R"({"run": "rc7", "files": {"a.dmp": {"content": "no dump", "written": 1795565460}}})"},
    {"known sample", SampleOf("k")},  // known_samples.txt
    {"new sample", SampleOf("x")}};

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) {
    std::erase(part, '`');
    parts.emplace_back(TrimBlanks(part));
  }
  return parts;
}

std::vector<Row> RowsOfTheTable() {
  std::ifstream page(OSTRELL_PROTOCOL_PAGE);
  std::string line;
  while (std::getline(page, line) && line != kHeading) {
  }
  std::getline(page, line);  // the rule below it
  std::vector<Row> rows;
  while (std::getline(page, line) && line.starts_with('|')) {
    rows.push_back(Split(line.substr(1), '|'));
  }
  return rows;
}

// "ticket 200" for a line of the outcome, "rc4 v=5&o 200".
std::string Answered(const std::string& line) {
  const size_t status = line.rfind(' ');
  if (!line.starts_with("rc")) {
    return line.substr(0, std::string_view("PUT 200").size());
  }
  return (line[status - 1] == 'o' ? "ticket" : "question") + line.substr(status);
}

std::string WhatComesNext(const std::string& machine, const std::string& outcome) {
  const auto has = [&outcome](const char* text) { return outcome.find(text) != std::string::npos; };
  const std::string did =
      machine == "rc1" ? (has("result [\"none\"]") ? "no instructions" : "instructions taken")
                       : (has("PUT ") ? "PUT" : "no PUT");
  return did + (has("recorded rpttm_") ? ", time recorded" : ", time stays");
}

TEST(AnswerTable, IsWhatTheAgentDoes) {
  std::set<std::string> faults = {"none", "slow"};  // slow: tests/transport/http_suite.cpp
  std::set<std::string> machines;
  for (const Row& row : RowsOfTheTable()) {
    for (const std::string& request : Split(row.at(0), ',')) {
      const size_t blank = request.rfind(' ');  // "new sample ticket" is a machine and a step
      const std::string machine = request.substr(0, blank);
      machines.insert(machine);
      for (const std::string& fault : Split(row.at(2), ',')) {
        SCOPED_TRACE(request);
        SCOPED_TRACE(fault);
        faults.insert(fault);
        ASSERT_TRUE(kMachines.contains(machine) && (fault == "none" || FaultNamed(fault)));
        const std::string outcome =
            OutcomeOf(kMachines.at(machine), R"({"fault": ")" + fault + "\"}");
        std::set<std::string> answered;
        for (const std::string& line : Split(outcome, '\n')) {
          answered.insert(Answered(line));
        }
        EXPECT_TRUE(answered.contains(request.substr(blank + 1) + " " + row.at(1).substr(0, 3)))
            << outcome;
        EXPECT_EQ(WhatComesNext(machine, outcome), row.at(3)) << outcome;
      }
    }
  }
  EXPECT_EQ(machines.size(), kMachines.size());
  EXPECT_EQ(faults.size(), AllFaults().size() + 1);
}

}  // namespace
}  // namespace ostrell
