#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "app/report_driver.h"
#include "tests/jobs/recorded_machine.h"
#include "tests/soak/failing_libraries.h"
#include "tests/soak/soak.h"
#include "tests/support/outside_call.h"
#include "tests/support/recorded_cases.h"

// All reports of a machine on which everything is due, run again and again: each time another call,
// another allocation fails, or the process ends at another moment.

namespace ostrell {
namespace {

// The reports that are recorded when they arrived, and only then.
constexpr std::array<std::pair<const char*, const char*>, 4> kRecordedWhenArrived = {
    {{"rpttm_ui", "rc1"},
     {"rpttm_li", "rc2"},
     {"rpttm_li_tools", "rc5"},
     {"rpttm_localinfo", "rc7"}}};
// The passes over samples, recorded once they had their list, and the statistics, which one run
// consumes.
constexpr std::array<const char*, 3> kPasses = {"rpttm_sf", "rpttm_fp", "rpttm_qf"};
constexpr const char* kStatistics = "rpttm_cc";

const std::set<std::wstring> kDeletable = {L"C:\\Corvane\\data\\tallyx5.dat",
                                           L"C:\\Corvane\\bin\\tallyx1.dat",
                                           L"C:\\Corvane\\bin\\old.dmp"};

std::shared_ptr<JobRun> FreshMachine() {
  const auto cases = CasesOf("report_sequence");
  const auto all = std::ranges::find(cases, "all", &RecordedCase::Name);
  return MachineOf((*all)["machine"], "{}");
}

// What the server received of a machine since a number.
class Arrivals {
 public:
  Arrivals(const JobRun& machine, const std::string& after) {
    std::set<std::string> asked;
    for (ReceivedRequest& request : RequestsWith("regid", machine.clientId, after)) {
      const bool isPut = request["method"] == "PUT";
      if (isPut) {
        EXPECT_EQ(request["digest"], "ok");
        sizes[request["report"]] += request["unpacked"] + " ";
      } else {
        EXPECT_TRUE(asked.insert(AskedOf(request["target"])).second) << request["target"];
      }
      if (isPut || request["report"] == "rc1") {
        arrived.insert(request["report"]);
      }
    }
  }
  bool Has(const char* report) const { return arrived.contains(report); }
  // Of the bodies of a report, in bytes.
  std::string SizesOf(const char* report) const {
    const auto found = sizes.find(report);
    return found != sizes.end() ? found->second : "";
  }

 private:
  // Without the fault that the server committed.
  static std::string AskedOf(const std::string& target) {
    return target.substr(target.find("/rc"));
  }

  std::set<std::string> arrived;
  std::map<std::string, std::string> sizes;
};

// What the settings hold, by key.
using LastTimes = std::map<std::string, int64_t>;

void RunAll(const JobRun& machine) {
  try {
    RunReports(machine.Get());
  } catch (...) {
    ADD_FAILURE() << "something was thrown";
  }
}

// A second run of the same machine, on which nothing fails, brings all that the first one has not
// recorded; `first` is what arrived of that one.
void ExpectNothingIsLost(JobRun& machine, const Arrivals& first) {
  const LastTimes recorded = machine.store.times;
  const bool hasStatistics = machine.files.entries.contains(L"C:\\Corvane\\data\\tallyx5.dat");
  const std::string after = LastChange();
  RunAll(machine);
  const Arrivals second(machine, after);
  for (const auto& [key, report] : kRecordedWhenArrived) {
    EXPECT_EQ(machine.store.times[key], machine.now) << key;
    EXPECT_TRUE(recorded.contains(key) ? first.Has(report) : second.Has(report)) << key;
  }
  for (const char* key : kPasses) {
    EXPECT_EQ(machine.store.times[key], machine.now) << key;
  }
  EXPECT_TRUE(!hasStatistics || recorded.contains(kStatistics) || second.Has("rc4"));
}

using FileEntries = std::map<std::wstring, FakeFiles::Entry>;

// What holds after every run on a machine that had those files. That all objects and handles are
// released by then the machine itself expects at its end.
void ExpectSound(JobRun& machine, const FileEntries& before, const Arrivals& arrivals) {
  std::set<std::string> keys;
  for (const auto& [key, time] : machine.store.written) {
    EXPECT_TRUE(keys.insert(key).second) << key << " was recorded twice";
    EXPECT_TRUE(time == machine.now || key == kStatistics) << key << " " << time;
  }
  for (const auto& [key, report] : kRecordedWhenArrived) {
    EXPECT_TRUE(!keys.contains(key) || arrivals.Has(report)) << key << " recorded";
  }
  for (const auto& [path, entry] : before) {
    EXPECT_TRUE(machine.files.entries.contains(path) || kDeletable.contains(path))
        << Utf8FromWide(path) << " is gone";
  }
}

// Every which point is tried.
int64_t Every() {
  return SoakStep(97);
}

class Torture : public testing::Test {
 protected:
  void TearDown() override {
    std::cout << points << " points, every " << Every() << ". tried: " << runs << " runs\n";
  }

  // One run as planned, judged, and the next one behind it. What arrived of the first.
  Arrivals Try(const OutsideCallPlan& plan, int64_t allocation) {
    ++runs;
    const auto machine = FreshMachine();
    const FileEntries before = machine->files.entries;
    const std::string after = LastChange();
    Allocations::Begin(allocation, plan.isLasting);
    OutsideCall::Begin(plan);
    RunAll(*machine);
    OutsideCall::End();
    Arrivals arrivals(*machine, after);
    ExpectSound(*machine, before, arrivals);
    ExpectNothingIsLost(*machine, arrivals);
    return arrivals;
  }

  int64_t points = 0;
  int64_t runs = 0;
};

// The first point of each test differs, so that a sample is spread over them.
TEST_F(Torture, EveryCallFails) {
  Try({}, 0);
  const std::vector<int> ways = OutsideCall::Ways();
  points = std::ranges::count_if(ways, [](int count) { return count > 0; });
  EXPECT_GT(points, 100);
  int64_t ordinal = 0;
  for (size_t call = 0; call < ways.size() && !HasFailure(); ++call) {
    for (const bool isLasting : {false, true}) {
      for (int way = 1; way <= (isLasting ? std::min(ways[call], 1) : ways[call]); ++way) {
        if (ordinal++ % Every() != 0) {
          continue;
        }
        SCOPED_TRACE(testing::Message() << "call " << call + 1 << ", way " << way
                                        << (isLasting ? " and all later ones" : ""));
        Try({.call = static_cast<int64_t>(call) + 1, .way = way, .isLasting = isLasting}, 0);
      }
    }
  }
}

TEST_F(Torture, EveryAllocationFails) {
  const Arrivals whole = Try({}, 0);  // what is made once only is made now
  {
    const auto machine = FreshMachine();
    Allocations::Begin(0, false);
    OutsideCall::Begin();
    RunAll(*machine);
    OutsideCall::End();
    points = Allocations::Count();
  }
  EXPECT_GT(points, 1000);
  for (int64_t allocation = 1; allocation <= points && !HasFailure(); allocation += Every()) {
    for (const bool isLasting : {false, true}) {
      SCOPED_TRACE(testing::Message()
                   << "allocation " << allocation << (isLasting ? " and all later ones" : ""));
      const Arrivals arrivals = Try({.isLasting = isLasting}, allocation);
      for (const char* report : {"rc2", "rc5"}) {
        EXPECT_TRUE(!arrivals.Has(report) || arrivals.SizesOf(report) == whole.SizesOf(report))
            << report << " lacks parts";
      }
    }
  }
}

// What a process that ended left behind, a line each: "KEY TIME" and, behind an empty line, the
// paths of the files.
std::string RemainsOf(const JobRun& machine) {
  std::ostringstream remains;
  for (const auto& [key, time] : machine.store.times) {
    remains << key << ' ' << time << '\n';
  }
  remains << '\n';
  for (const auto& [path, entry] : machine.files.entries) {
    remains << Utf8FromWide(path) << '\n';
  }
  return remains.str();
}

void TakeOver(JobRun& machine, const std::string& remains) {
  std::istringstream lines(remains);
  std::string line;
  while (std::getline(lines, line) && !line.empty()) {
    const size_t blank = line.find(' ');
    machine.store.times[line.substr(0, blank)] = std::stoll(line.substr(blank));
  }
  std::set<std::wstring> present;
  while (std::getline(lines, line)) {
    present.insert(WideFromUtf8(line).value());
  }
  std::erase_if(machine.files.entries,
                [&](const auto& entry) { return !present.contains(entry.first); });
}

// Runs the machine in a process of its own, which ends at that call. What it left.
std::string RemainsOfEnded(JobRun& machine, int64_t call) {
  std::array<int, 2> pipe;
  EXPECT_EQ(::pipe(pipe.data()), 0);
  const pid_t child = fork();
  if (child == 0) {
    const auto end = [&] {
      const std::string remains = RemainsOf(machine);
      const auto count = write(pipe[1], remains.data(), remains.size());
      _exit(count == static_cast<ssize_t>(remains.size()) ? 0 : 1);
    };
    OutsideCall::Begin({.call = call, .instead = end});
    RunAll(machine);
    _exit(2);  // there was no such call
  }
  close(pipe[1]);
  std::string remains;
  std::array<char, 4096> block;
  for (ssize_t count; (count = read(pipe[0], block.data(), block.size())) > 0;) {
    remains.append(block.data(), static_cast<size_t>(count));
  }
  close(pipe[0]);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  return remains;
}

TEST_F(Torture, ProcessEndsAtEveryCall) {
  Try({}, 0);
  points = static_cast<int64_t>(OutsideCall::Ways().size());
  for (int64_t call = 1; call <= points && !HasFailure(); call += Every()) {
    SCOPED_TRACE(testing::Message() << "ended at call " << call);
    ++runs;
    const auto machine = FreshMachine();
    const std::string after = LastChange();
    TakeOver(*machine, RemainsOfEnded(*machine, call));
    const Arrivals arrivals(*machine, after);
    for (const auto& [key, report] : kRecordedWhenArrived) {
      EXPECT_TRUE(!machine->store.times.contains(key) || arrivals.Has(report)) << key;
    }
    ExpectNothingIsLost(*machine, arrivals);
  }
}

}  // namespace
}  // namespace ostrell
