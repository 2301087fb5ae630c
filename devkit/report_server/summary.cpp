// Prints what a report server kept of one run, for people, and judges it.
#include <fmt/core.h>
#include <getopt.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "devkit/report_server/request_summary.h"
#include "devkit/report_server/sample_summary.h"

namespace ostrell {
namespace {

constexpr int kUsageError = 2;

constexpr auto kHelp =
    R"(Usage: report_summary --store DIR [--after N]
                      [--expected FILE --before DIR --now SECONDS [--not-sent FILE]]

Prints what the report server kept in DIR behind the first N requests, and with --expected what
became of the files that the sample product names, and judges it: FILE is devkit/sample/expected.json with its times
filled in, --before a copy of the product's data folder as the run found it, --now when it began.
--not-sent writes what was not sent, and why, as the server's page takes it.

Exit codes: 0 all that was due arrived, and nothing else, 1 not so, 2 wrong arguments. rc1 arrived by
a request that was answered with 200, any other by a PUT with sound digest, stream and JSON; rc7
with its client fields in every item, equal to those of rc1; rc3 when every sample was asked about
and sent that should be. 1 also when a sample, or an item of a report that is sent for the first
time, is not expected, and when a request has a wrong identity: "u" and "regid" have a form of their
own and are those of rc1, "v" of rc4 is 5.
)";

struct Arguments {
  std::filesystem::path store;
  size_t after = 0;
  std::filesystem::path expected;
  std::filesystem::path before;
  int64_t now = 0;
  std::filesystem::path notSent;
};

// False for arguments that it does not know.
bool ParseArguments(int argc, char** argv, Arguments& arguments) {
  constexpr option kOptions[] = {{"store", required_argument, nullptr, 's'},
                                 {"after", required_argument, nullptr, 'a'},
                                 {"expected", required_argument, nullptr, 'e'},
                                 {"before", required_argument, nullptr, 'b'},
                                 {"now", required_argument, nullptr, 'n'},
                                 {"not-sent", required_argument, nullptr, 'o'},
                                 {}};
  for (int letter = 0; (letter = getopt_long(argc, argv, "", kOptions, nullptr)) != -1;) {
    switch (letter) {
      case 's':
        arguments.store = optarg;
        break;
      case 'a':
        arguments.after = std::strtoul(optarg, nullptr, 10);
        break;
      case 'e':
        arguments.expected = optarg;
        break;
      case 'b':
        arguments.before = optarg;
        break;
      case 'n':
        arguments.now = std::strtoll(optarg, nullptr, 10);
        break;
      case 'o':
        arguments.notSent = optarg;
        break;
      default:
        return false;
    }
  }
  const bool isJudging =
      !arguments.expected.empty() && !arguments.before.empty() && arguments.now != 0;
  return optind == argc && !arguments.store.empty() &&
         (isJudging || (arguments.expected.empty() && arguments.notSent.empty()));
}

void PrintOrder(const std::vector<JsonOwner>& requests) {
  std::string last;
  fmt::print("\norder     ");
  for (const JsonOwner& line : requests) {
    const std::string report = TextOf(line.Get(), "report");
    if (report != last) {
      fmt::print(" {}", report);
      last = report;
    }
  }
  fmt::print("\n");
}

// Prints which reports were not as they had to be; false when there is one.
bool PrintVerdict(const ReportVerdict& verdict, const ExpectedRun& expected) {
  const std::set<std::string> due = expected.Due();
  bool isSound = true;
  const auto print = [&](std::string_view mark, const std::string& report, std::string_view what) {
    fmt::print("{:<10} {} {}\n", mark, report, what);
    isSound = false;
  };
  for (const std::string& report : due) {
    if (!verdict.arrived.contains(report)) {
      print("missing", report, "was due and did not arrive");
    }
  }
  for (const std::string& report : verdict.arrived) {
    if (!due.contains(report)) {
      print("wrong", report, "was not due and arrived");
    }
  }
  for (const std::string& report : verdict.misnaming) {
    print("wrong", report, "has requests with a wrong identity");
  }
  for (const std::string& report : verdict.differing) {
    print("wrong", report, "does not hold what was expected");
  }
  return isSound;
}

void PrintTotal(const std::vector<JsonOwner>& requests, const Arguments& arguments) {
  PrintOrder(requests);
  fmt::print("requests   {} in {}\n", requests.size(), arguments.store.string());
}

// Of a run of which nothing is expected.
int Print(const Arguments& arguments) {
  const ExpectedRun nothing({}, arguments.store, arguments.now);
  const std::vector<JsonOwner> requests = LoadRequests(arguments.store, arguments.after);
  PrintRequests(requests, arguments.store, nothing);
  PrintTotal(requests, arguments);
  return 0;
}

void PrintNotDue(const ExpectedRun& expected, json_t* notSent) {
  for (const json_t* row : expected.Reports()) {
    if (const std::string why = expected.WhyNotDue(row); !why.empty()) {
      fmt::print("not due    {} {}\n", TextOf(row, "report"), why);
      json_array_append_new(
          notSent, json_pack("{s:s, s:s, s:s}", "report", TextOf(row, "report").c_str(), "what",
                             "not due", "why", why.c_str()));
    }
  }
}

int Judge(const Arguments& arguments) {
  JsonOwner list(json_load_file(arguments.expected.c_str(), 0, nullptr));
  if (!list) {
    fmt::print(stderr, "report_summary: {} is no JSON document\n", arguments.expected.string());
    return kUsageError;
  }
  const ExpectedRun expected(std::move(list), arguments.before, arguments.now);
  const std::vector<JsonOwner> requests = LoadRequests(arguments.store, arguments.after);
  ReportVerdict verdict = PrintRequests(requests, arguments.store, expected);
  const JsonOwner notSent(json_array());
  const bool areSamplesSound = PrintSamples(expected, requests, notSent.Get());
  verdict.arrived.erase("rc3");
  if (expected.Due().contains("rc3") && areSamplesSound) {
    verdict.arrived.insert("rc3");
  }
  PrintTotal(requests, arguments);
  const bool isSound = PrintVerdict(verdict, expected);
  PrintNotDue(expected, notSent.Get());
  if (!arguments.notSent.empty() &&
      json_dump_file(notSent.Get(), arguments.notSent.c_str(), JSON_COMPACT) != 0) {
    fmt::print(stderr, "report_summary: cannot write {}\n", arguments.notSent.string());
    return kUsageError;
  }
  return isSound && areSamplesSound ? 0 : 1;
}

}  // namespace
}  // namespace ostrell

// NOLINTNEXTLINE(bugprone-exception-escape): what is thrown ends a tool like this.
int main(int argc, char** argv) {
  ostrell::Arguments arguments;
  if (!ostrell::ParseArguments(argc, argv, arguments)) {
    fmt::print(stderr, "{}", ostrell::kHelp);
    return ostrell::kUsageError;
  }
  return arguments.expected.empty() ? ostrell::Print(arguments) : ostrell::Judge(arguments);
}
