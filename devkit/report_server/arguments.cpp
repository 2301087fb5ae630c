#include "devkit/report_server/arguments.h"

#include <getopt.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string_view>

#include "base/json.h"
#include "base/print.h"
#include "base/text.h"
#include "devkit/report_server/whole_number.h"

namespace ostrell {
namespace {

constexpr int kUsageError = 2;

constexpr std::string_view kHelp =
    R"(Usage: report_server [--port N] [--view-port N] [--store DIR] [--fault NAME]...
                     [--instructions FILE] [--known FILE] [--exec COMMAND ARG...]
       report_server --tail PAGE

Local report server: HTTPS on 127.0.0.1 with a certificate made at start. Serves until SIGTERM or
SIGINT; with --exec until the command ends.

  --port N             port, default 18443; 0 takes a free one
  --view-port N        port of the page that shows what came in, plain HTTP on 127.0.0.1; a free
                       one is taken without it
  --store DIR          keep every request in DIR: NNNN.request, NNNN.body, requests.jsonl
  --fault NAME         misbehave on every request that the fault concerns; can be repeated
  --instructions FILE  JSON document that rc1 is answered with
  --known FILE         SHA-1 digests of known samples, one a line, upper-case hexadecimal
  --exec COMMAND...    run the command with OSTRELL_TEST_SERVER=https://127.0.0.1:PORT and
                       OSTRELL_TEST_VIEWER, the page's address, and exit with its code (128 + N
                       when signal N ended it, 127 when it cannot be started)
  --tail PAGE          serve nothing; print a line for each request of the server whose page has the
                       address PAGE, as they come in, until it ends
  --help               this text

A request to /fault/NAME/PATH has that fault and no other; /fault/none/PATH has none.

Exit codes: 0 ended by a signal, 2 wrong arguments, 3 the server cannot start (the port is taken).

Faults:
)";

void PrintHelp() {
  std::string text(kHelp);
  for (const FaultEntry& entry : AllFaults()) {
    text += Print("  %-14s %s\n", entry.name, entry.help);
  }
  std::fputs(text.c_str(), stdout);
}

// Says what is wrong; always false.
bool Refuse(std::string_view what, std::string_view argument) {
  std::fputs(Print("report_server: %s: %s\n", what, argument).c_str(), stderr);
  return false;
}

bool ReadFile(const char* path, std::string& text) {
  std::ifstream file(path, std::ios::binary);
  text.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  return (file.is_open() && !file.bad()) || Refuse("cannot read", path);
}

bool TakePort(std::string_view text, int& port) {
  const auto number = WholeNumber<int>(text);
  if (!number || *number < 0 || *number > 65535) {
    return Refuse("not a port", text);
  }
  port = *number;
  return true;
}

bool TakeFault(const char* name, ReportServerOptions& options) {
  const std::optional<Fault> fault = FaultNamed(name);
  if (!fault) {
    return Refuse("no such fault", name);
  }
  options.faults.push_back(*fault);
  return true;
}

bool TakeInstructions(const char* path, ReportServerOptions& options) {
  std::string& text = options.instructions;
  if (!ReadFile(path, text)) {
    return false;
  }
  json_error_t error;
  const JsonOwner document(json_loadb(text.data(), text.size(), 0, &error));
  return document || Refuse(Print("not JSON, line %d, %s", error.line, error.text), path);
}

bool TakeKnown(const char* path, ReportServerOptions& options) {
  std::string text;
  if (!ReadFile(path, text)) {
    return false;
  }
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    options.known.emplace(TrimBlanks(line));
  }
  return true;
}

// Takes one of the options that have a value; false when that is wrong.
bool TakeOption(int letter, Arguments& arguments) {
  ReportServerOptions& options = arguments.options;
  switch (letter) {
    case 'p':
      return TakePort(optarg, options.port);
    case 'v':
      return TakePort(optarg, arguments.viewPort);
    case 't':
      arguments.followed = optarg;
      return true;
    case 's':
      options.store = optarg;
      return true;
    case 'f':
      return TakeFault(optarg, options);
    case 'i':
      return TakeInstructions(optarg, options);
    case 'k':
      return TakeKnown(optarg, options);
    default:
      return false;
  }
}

}  // namespace

std::variant<Arguments, int> ParseArguments(int argc, char** argv) {
  constexpr option kOptions[] = {
      {"port", required_argument, nullptr, 'p'},  {"view-port", required_argument, nullptr, 'v'},
      {"tail", required_argument, nullptr, 't'},  {"store", required_argument, nullptr, 's'},
      {"fault", required_argument, nullptr, 'f'}, {"instructions", required_argument, nullptr, 'i'},
      {"known", required_argument, nullptr, 'k'}, {"exec", no_argument, nullptr, 'e'},
      {"help", no_argument, nullptr, 'h'},        {}};
  Arguments arguments;
  int letter = 0;
  while ((letter = getopt_long(argc, argv, "+", kOptions, nullptr)) != -1 && letter != 'e') {
    if (letter == 'h') {
      PrintHelp();
      return 0;
    }
    if (!TakeOption(letter, arguments)) {
      return kUsageError;
    }
  }
  if (letter == 'e') {
    arguments.command.assign(argv + optind, argv + argc);
  }
  const bool isCommandMissing = letter == 'e' && arguments.command.empty();
  const bool isTooMany = letter == -1 && optind < argc;
  if (isCommandMissing || isTooMany) {
    Refuse(isTooMany ? "unexpected argument" : "no command after",
           isTooMany ? argv[optind] : "--exec");
    return kUsageError;
  }
  return arguments;
}

}  // namespace ostrell
