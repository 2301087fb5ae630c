// Prints what a report server kept of one run, for people, and judges it.
#include <fmt/core.h>
#include <getopt.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "devkit/report_server/request_summary.h"
#include "devkit/report_server/sample_summary.h"

namespace ostrell {
namespace {

constexpr int kUsageError = 2;

constexpr auto kHelp =
    R"(Usage: report_summary --store DIR [--after N] [--drive DIR --settings FILE
                      --instructions FILE --now SECONDS] REPORT...

Prints what the report server kept in DIR behind the first N requests. With --drive also what became
of the samples of the machine whose drive C: is there: --settings is the agent's settings file
before the run, --instructions what the server answers rc1 with, --now when the run began.

Exit codes: 0 every REPORT arrived, 1 one did not, 2 wrong arguments. rc1 arrived by a request that
was answered with 200, any other by a PUT with sound digest, stream and JSON; rc7 with its client
fields in every item, equal to those of rc1; rc3, with --drive, when every sample was asked about
and sent that should be. 1 also when a request has a wrong identity: "u" and "regid" have a form of
their own and are those of rc1, "v" of rc4 is 5.
)";

struct Arguments {
  std::filesystem::path store;
  size_t after = 0;
  MachinePlaces machine;
  std::set<std::string> due;
};

// False for arguments that it does not know.
bool ParseArguments(int argc, char** argv, Arguments& arguments) {
  constexpr option kOptions[] = {{"store", required_argument, nullptr, 's'},
                                 {"after", required_argument, nullptr, 'a'},
                                 {"drive", required_argument, nullptr, 'd'},
                                 {"settings", required_argument, nullptr, 'o'},
                                 {"instructions", required_argument, nullptr, 'i'},
                                 {"now", required_argument, nullptr, 'n'},
                                 {}};
  for (int letter = 0; (letter = getopt_long(argc, argv, "", kOptions, nullptr)) != -1;) {
    switch (letter) {
      case 's':
        arguments.store = optarg;
        break;
      case 'a':
        arguments.after = std::strtoul(optarg, nullptr, 10);
        break;
      case 'd':
        arguments.machine.drive = optarg;
        break;
      case 'o':
        arguments.machine.settings = optarg;
        break;
      case 'i':
        arguments.machine.instructions = optarg;
        break;
      case 'n':
        arguments.machine.now = std::strtoll(optarg, nullptr, 10);
        break;
      default:
        return false;
    }
  }
  arguments.due = {argv + optind, argv + argc};
  return !arguments.store.empty();
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

int Summarise(Arguments& arguments) {
  const std::vector<JsonOwner> requests = LoadRequests(arguments.store, arguments.after);
  ReportVerdict verdict = PrintRequests(requests, arguments.store);
  if (!arguments.machine.drive.empty()) {
    verdict.arrived.erase("rc3");
    if (PrintSamples(ReportedMachine(arguments.machine), requests)) {
      verdict.arrived.insert("rc3");
    }
  }
  PrintOrder(requests);
  fmt::print("requests   {} in {}\n", requests.size(), arguments.store.string());
  for (const std::string& report : verdict.arrived) {
    arguments.due.erase(report);
  }
  for (const std::string& report : arguments.due) {
    fmt::print("missing    {} was due and did not arrive\n", report);
  }
  for (const std::string& report : verdict.misnaming) {
    fmt::print("wrong      {} has requests with a wrong identity\n", report);
  }
  return arguments.due.empty() && verdict.misnaming.empty() ? 0 : 1;
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
  return ostrell::Summarise(arguments);
}
