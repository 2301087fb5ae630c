// Runs two commands in turn, A B A B ..., and compares what they take.
//
// Usage: compare_processes RUNS WORK NAME-A 'COMMAND-A' NAME-B 'COMMAND-B'
//
// Each command is given to the shell, which becomes it ("exec"), so that the system's accounting of
// the finished process is that of the program itself. More runs than one are preceded by a pair
// that warms up. The ratios of CPU time and memory are appended to the file that
// OSTRELL_BENCH_RATIOS names, "WORK<TAB>FIGURE<TAB>RATIO" a line. Ends with 1 when a command fails.
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
  double pageFaults;  // without reading from a disk
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
                 static_cast<double>(usage.ru_maxrss) / 1024, static_cast<double>(usage.ru_minflt)};
}

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// The median of each side, and of the ratios pair by pair, which a drift of the machine leaves
// alone. Returns the latter.
double PrintRow(const char* figure, const std::vector<Figures>& a, const std::vector<Figures>& b,
                double Figures::*member) {
  std::vector<double> valuesA;
  std::vector<double> valuesB;
  std::vector<double> ratios;
  for (size_t i = 0; i < a.size(); ++i) {
    valuesA.push_back(a[i].*member);
    valuesB.push_back(b[i].*member);
    ratios.push_back(valuesA.back() / valuesB.back());
  }
  const double ratio = Median(ratios);
  fmt::print("{:<22}{:>14.1f}{:>14.1f}{:>10.2f}\n", figure, Median(valuesA), Median(valuesB),
             ratio);
  return ratio;
}

bool Record(const char* work, const char* figure, double ratio) {
  const char* const path = std::getenv("OSTRELL_BENCH_RATIOS");
  std::FILE* const file = path != nullptr ? std::fopen(path, "a") : nullptr;
  if (file != nullptr) {
    fmt::print(file, "{}\t{}\t{:.2f}\n", work, figure, ratio);
  }
  return path == nullptr || (file != nullptr && std::fclose(file) == 0);
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what is thrown ends a tool like this.
int main(int argc, char** argv) {
  const int runs = argc == 7 ? std::atoi(argv[1]) : 0;
  if (runs < 1) {
    fmt::print(stderr, "usage: compare_processes RUNS WORK NAME-A COMMAND-A NAME-B COMMAND-B\n");
    return 2;
  }
  std::vector<Figures> a;
  std::vector<Figures> b;
  const bool warmsUp = runs > 1;
  for (int run = warmsUp ? 0 : 1; run <= runs; ++run) {
    const auto figuresA = RunOnce(argv[4]);
    const auto figuresB = RunOnce(argv[6]);
    if (!figuresA || !figuresB) {
      fmt::print(stderr, "failed: {}\n", figuresA ? argv[6] : argv[4]);
      return 1;
    }
    if (run > 0) {
      a.push_back(*figuresA);
      b.push_back(*figuresB);
    }
  }
  fmt::print("{:<22}{:>14}{:>14}{:>10}\n", fmt::format("median of {}", runs), argv[3], argv[5],
             "ratio");
  PrintRow("wall time, ms", a, b, &Figures::milliseconds);
  const double cpu = PrintRow("CPU time, ms", a, b, &Figures::cpuMilliseconds);
  const double memory = PrintRow("peak memory, MiB", a, b, &Figures::megabytes);
  PrintRow("page faults", a, b, &Figures::pageFaults);
  return Record(argv[2], "CPU time", cpu) && Record(argv[2], "memory", memory) ? 0 : 1;
}
