// Runs two commands in turn, A B A B ..., and compares wall time, CPU time and peak resident
// memory.
//
// Usage: compare_processes RUNS NAME-A 'COMMAND-A' NAME-B 'COMMAND-B'
//
// Each command is given to the shell, which becomes it ("exec"), so that the system's accounting of
// the finished process is that of the program itself. Ends with 1 when a command fails.
#include <fmt/core.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace {

struct Figures {
  double milliseconds;
  double cpuMilliseconds;
  double megabytes;
};

double Milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

std::optional<Figures> RunOnce(const std::string& command) {
  const auto started = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    execl("/bin/sh", "sh", "-c", ("exec " + command + " >/dev/null").c_str(), nullptr);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
    return std::nullopt;
  }
  const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - started;
  return Figures{wall.count(), Milliseconds(usage.ru_utime) + Milliseconds(usage.ru_stime),
                 static_cast<double>(usage.ru_maxrss) / 1024};
}

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// The median of each side, and of the ratios pair by pair, which a drift of the machine leaves
// alone.
void PrintRow(const char* figure, const std::vector<Figures>& a, const std::vector<Figures>& b,
              double Figures::*member) {
  std::vector<double> valuesA;
  std::vector<double> valuesB;
  std::vector<double> ratios;
  for (size_t i = 0; i < a.size(); ++i) {
    valuesA.push_back(a[i].*member);
    valuesB.push_back(b[i].*member);
    ratios.push_back(valuesA.back() / valuesB.back());
  }
  fmt::print("{:<22}{:>14.1f}{:>14.1f}{:>10.2f}\n", figure, Median(valuesA), Median(valuesB),
             Median(ratios));
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what is thrown ends a tool like this.
int main(int argc, char** argv) {
  const int runs = argc == 6 ? std::atoi(argv[1]) : 0;
  if (runs < 1) {
    fmt::print(stderr, "usage: compare_processes RUNS NAME-A COMMAND-A NAME-B COMMAND-B\n");
    return 2;
  }
  std::vector<Figures> a;
  std::vector<Figures> b;
  for (int run = 0; run <= runs; ++run) {
    const auto figuresA = RunOnce(argv[3]);
    const auto figuresB = RunOnce(argv[5]);
    if (!figuresA || !figuresB) {
      fmt::print(stderr, "failed: {}\n", figuresA ? argv[5] : argv[3]);
      return 1;
    }
    if (run > 0) {  // the first pair warms up
      a.push_back(*figuresA);
      b.push_back(*figuresB);
    }
  }
  fmt::print("{:<22}{:>14}{:>14}{:>10}\n", fmt::format("median of {}", runs), argv[2], argv[4],
             "ratio");
  PrintRow("wall time, ms", a, b, &Figures::milliseconds);
  PrintRow("CPU time, ms", a, b, &Figures::cpuMilliseconds);
  PrintRow("peak memory, MiB", a, b, &Figures::megabytes);
  return 0;
}
