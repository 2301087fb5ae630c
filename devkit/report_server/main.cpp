#include <cstdio>
#include <exception>
#include <string>
#include <utility>
#include <variant>

#include "devkit/report_server/arguments.h"
#include "devkit/report_server/command.h"
#include "devkit/report_server/report_server.h"
#include "devkit/viewer/tail.h"
#include "devkit/viewer/viewer.h"

namespace {

int Run(int argc, char** argv) {
  constexpr int kCannotServe = 3;
  auto parsed = ostrell::ParseArguments(argc, argv);
  if (const int* exitCode = std::get_if<int>(&parsed)) {
    return *exitCode;
  }
  auto& arguments = std::get<ostrell::Arguments>(parsed);
  if (!arguments.followed.empty()) {
    const auto print = [](const std::string& line) {
      return std::puts(line.c_str()) != EOF && std::fflush(stdout) == 0;
    };
    return ostrell::FollowRequests(arguments.followed, print) ? 0 : kCannotServe;
  }
  ostrell::HoldSignals();
  ostrell::ReportServer server(std::move(arguments.options));
  std::string why;
  ostrell::Viewer viewer(server);
  if (!server.Start(&why) || !viewer.Start(arguments.viewPort, &why)) {
    std::fprintf(stderr, "report_server: %s\n", why.c_str());
    return kCannotServe;
  }
  if (!arguments.command.empty()) {
    return ostrell::RunCommand(arguments.command, {{"OSTRELL_TEST_SERVER", server.Url()},
                                                   {"OSTRELL_TEST_VIEWER", viewer.Url()}});
  }
  std::printf("listening on %s, page at %s\n", server.Url().c_str(), viewer.Url().c_str());
  std::fflush(stdout);
  ostrell::WaitForEnd();
  server.Stop();  // first: calls of the page wait for changes
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "report_server: %s\n", error.what());
    return 1;
  }
}
