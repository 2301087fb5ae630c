#pragma once

#include <string>
#include <variant>
#include <vector>

#include "devkit/report_server/report_server.h"

namespace ostrell {

// The command line of the program.
struct Arguments {
  ReportServerOptions options;
  int viewPort = 0;                  // of the page; 0 takes a free one
  std::string followed;              // address of another server's page; empty: serve
  std::vector<std::string> command;  // to be run while the server serves; empty: none
};

// The arguments, or the code to exit with: 0 after the help text, 2 after one line on stderr that
// says what is wrong with an argument or with the file that it names.
std::variant<Arguments, int> ParseArguments(int argc, char** argv);

}  // namespace ostrell
