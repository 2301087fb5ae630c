#pragma once

#include <map>
#include <string>
#include <vector>

namespace ostrell {

// The signals that the waits below take: SIGTERM, SIGINT and SIGCHLD. To be called before any
// thread is started, so that none of them is interrupted.
void HoldSignals();

// Returns when SIGTERM or SIGINT has come.
void WaitForEnd();

// Runs `command` with these variables in its environment and returns its exit code: 128 + N
// when signal N ended it; 127, after one line on stderr, when it cannot be started. SIGTERM is
// passed on to it; SIGINT is left to it, as a terminal sends that to both.
int RunCommand(const std::vector<std::string>& command,
               const std::map<std::string, std::string>& variables);

}  // namespace ostrell
