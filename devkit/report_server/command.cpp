#include "devkit/report_server/command.h"

#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <optional>
#include <system_error>

#include "base/owner.h"
#include "base/print.h"

namespace ostrell {
namespace {

constexpr int kCannotStart = 127;

sigset_t SetOf(std::initializer_list<int> signals) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) {
    sigaddset(&set, signal);
  }
  return set;
}

int NextSignal() {
  const sigset_t held = SetOf({SIGTERM, SIGINT, SIGCHLD});
  int signal = 0;
  sigwait(&held, &signal);
  return signal;
}

struct SpawnAttributesTraits {
  using Handle = posix_spawnattr_t*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle attributes) noexcept { posix_spawnattr_destroy(attributes); }
};

// "NAME=value", with `added` in place of those of the same names.
std::vector<std::string> EnvironmentWith(const std::map<std::string, std::string>& added) {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text(*variable);
    if (!added.contains(text.substr(0, text.find('=')))) {
      variables.push_back(text);
    }
  }
  for (const auto& [name, value] : added) {
    variables.push_back(Print("%s=%s", name, value));
  }
  return variables;
}

// Terminated as exec wants it; valid as long as `texts`.
std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

// The command starts with the signal state that this program had: none held, none ignored.
std::optional<pid_t> Start(std::vector<std::string> command, std::vector<std::string> variables) {
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  const Owner<SpawnAttributesTraits> destroyed(&attributes);
  const sigset_t none = SetOf({});
  const sigset_t reset = SetOf({SIGPIPE});
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &reset);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  pid_t child = 0;
  const int error = posix_spawnp(&child, command[0].c_str(), nullptr, &attributes,
                                 Pointers(command).data(), Pointers(variables).data());
  if (error != 0) {
    std::fprintf(stderr, "report_server: %s: %s\n", command[0].c_str(),
                 std::generic_category().message(error).c_str());
    return std::nullopt;
  }
  return child;
}

}  // namespace

void HoldSignals() {
  const sigset_t held = SetOf({SIGTERM, SIGINT, SIGCHLD});
  pthread_sigmask(SIG_BLOCK, &held, nullptr);
}

void WaitForEnd() {
  while (NextSignal() == SIGCHLD) {
  }
}

int RunCommand(const std::vector<std::string>& command,
               const std::map<std::string, std::string>& variables) {
  const std::optional<pid_t> child = Start(command, EnvironmentWith(variables));
  if (!child) {
    return kCannotStart;
  }
  int status = 0;
  while (waitpid(*child, &status, WNOHANG) != *child) {
    if (NextSignal() == SIGTERM) {
      kill(*child, SIGTERM);
    }
  }
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace ostrell
