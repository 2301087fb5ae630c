#include <fmt/core.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <set>

#include "tests/soak/soak.h"
#include "tests/system/agent_run.h"

// The whole program again and again, and by clocks that are wrong.

namespace ostrell {
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

const Names kAll = {"rc1", "rc2", "rc3", "rc4", "rc5", "rc7"};

constexpr const char* kKeys[] = {"rpttm_ui", "rpttm_li", "rpttm_li_tools", "rpttm_sf",
                                 "rpttm_fp", "rpttm_qf", "rpttm_cc",       "rpttm_localinfo"};

void SetAllTimes(const SampleProduct& product, int64_t time) {
  for (const char* key : kKeys) {
    product.Set("int64", key, time);
  }
}

Names Reports(const AgentServer& server) {
  Names reports;
  for (const auto& request : server.Requests()) {
    reports.insert(request.report);
  }
  return reports;
}

// The names of whatever runs in the prefix.
Names Processes(const SampleProduct& product) {
  const std::string bin = product.BinFolder().string();
  const std::string ours = "WINEPREFIX=" + bin.substr(0, bin.find("/drive_c")) + '\0';
  Names names;
  for (const auto& process : fs::directory_iterator("/proc")) {
    if (ReadText(process.path() / "environ").find(ours) != std::string::npos) {
      names.insert(ReadText(process.path() / "comm"));
    }
  }
  return names;
}

std::string RegistryText(const SampleProduct& product) {
  std::string text;
  for (const char* key : {"HKLM\\SOFTWARE", "HKCU"}) {
    product.Registry(fmt::format("export '{}' 'C:\\ProgramData\\soak.reg' /y", key));
    text += ReadText(product.DataFolder() / "../../soak.reg");
  }
  return text;
}

// The sizes of the product's files.
std::map<std::string, int64_t> Files(const SampleProduct& product) {
  std::map<std::string, int64_t> files;
  for (const auto& folder : {product.InstallFolder(), product.DataFolder()}) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file()) {
        files[entry.path().filename()] += static_cast<int64_t>(entry.file_size());
      }
    }
  }
  return files;
}

void Print(const char* name, std::vector<int64_t> values) {
  const int64_t first = values.front();
  const int64_t last = values.back();
  std::ranges::sort(values);
  fmt::print("{:11} first {:8} median {:8} last {:8}\n", name, first, values[values.size() / 2],
             last);
}

// A mutex that stayed would keep the next run from sending.
RunResult RunAll(const SampleProduct& product, const std::string& statistics) {
  WriteText(product.DataFolder() / "tallyx5.dat", statistics);
  SetAllTimes(product, 0);
  const AgentServer server;
  RunResult run = RunAgent();
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(Reports(server), kAll);
  return run;
}

TEST(LongRuns, LeaveNothingBehind) {
  const SampleProduct product(SampleProduct::Due::kAll);
  const std::string statistics = ReadText(product.DataFolder() / "tallyx5.dat");
  RunAll(product, statistics);  // cleans up, makes the client id
  const std::string registry = RegistryText(product);
  const Names processes = Processes(product);
  auto files = Files(product);
  std::vector<int64_t> wall, peak, count, traced;
  for (int i = 0; i < (IsWholeSoak() ? 500 : 4); ++i) {
    SCOPED_TRACE(i);
    const RunResult run = RunAll(product, statistics);
    auto now = Files(product);
    wall.push_back(run.wall.count());
    peak.push_back(run.peakBytes / 1024);
    count.push_back(std::ssize(now));
    traced.push_back(now["tracelog.txt"] - files["tracelog.txt"]);
    EXPECT_EQ(traced.back(), traced.front());
    files["tracelog.txt"] = now["tracelog.txt"];
    EXPECT_EQ(now, files);
    EXPECT_THAT(processes, testing::IsSupersetOf(Processes(product)));
  }
  EXPECT_EQ(RegistryText(product), registry);
  const auto part = std::min<ptrdiff_t>(50, std::ssize(peak) / 2);
  EXPECT_LE(*std::max_element(peak.end() - part, peak.end()),
            *std::max_element(peak.begin(), peak.begin() + part) + 1024);
  Print("wall, ms", wall);
  Print("peak, KiB", peak);
  Print("files", count);
  Print("trace bytes", traced);
}

constexpr int64_t kHour = 3600;
constexpr int64_t kDay = 24 * kHour;
constexpr int64_t kYear = 365 * kDay;

// Moves the wall clock of the program; the monotonic one, and the times of files, stay.
RunResult RunAt(int64_t time) {
  return RunAgent("-all", fmt::format("LD_PRELOAD=/usr/lib/x86_64-linux-gnu/faketime/"
                                      "libfaketime.so.1 FAKETIME_DONT_FAKE_MONOTONIC=1 "
                                      "NO_FAKE_STAT=1 FAKETIME_FMT=%s FAKETIME=@{} ",
                                      time));
}

void ExpectNear(uint64_t time, int64_t expected, const std::string& what) {
  const auto difference = static_cast<int64_t>(time - static_cast<uint64_t>(expected));
  EXPECT_LE(std::abs(difference), 60) << what << ' ' << time << ' ' << expected;
}

// As rc1 tells the time since the last one.
void ExpectGap(const AgentServer& server, int64_t gap) {
  ExpectNear(std::stoull(server.Requests("rc1").at(0).query.at("r")), gap, "r");
}

// A run by a wrong clock, and one by the right clock after it. What is on the machine is of the
// last days: by a clock ahead only the statistics and the quarantine's list have something to say,
// and their reports wait afterwards until that time has come; by a clock behind all reports wait.
void TryClock(int64_t clock) {
  SCOPED_TRACE(clock);
  const bool isAhead = clock > std::time(nullptr);
  const SampleProduct product(SampleProduct::Due::kAll);
  const int64_t last = product.Time("rpttm_qf").value_or(0);
  SetAllTimes(product, last);
  {
    const AgentServer server;
    EXPECT_EQ(RunAt(clock).exitCode, 0);
    EXPECT_EQ(Reports(server), isAhead ? Names({"rc1", "rc4"}) : Names({"rc1"}));
    ExpectGap(server, clock - last);
  }
  for (const std::string key : kKeys) {
    const bool isRecorded = key == "rpttm_ui" || key == "rpttm_qf" || key == "rpttm_cc";
    ExpectNear(product.Time(key).value_or(-1), isAhead && isRecorded ? clock : last, key);
  }
  // By a clock ahead the dumps are more than thirty days old.
  EXPECT_NE(fs::exists(product.BinFolder() / "vguard.exe.2816.dmp"), isAhead);
  const AgentServer server;
  const RunJudge judge(product);
  EXPECT_EQ(RunAgent().exitCode, 0);
  EXPECT_EQ(Reports(server), (Names{"rc1", "rc2", "rc3", "rc5", "rc7"}));
  EXPECT_TRUE(judge.FindsAllThatWasDue());
  ExpectGap(server, std::time(nullptr) - (isAhead ? clock : last));
}

// Before 1970 Wine itself does not start.
TEST(Clocks, AnyTimeIsSurvived) {
  const int64_t now = std::time(nullptr);
  TryClock(2147483648);  // 2038-01-19 03:14:08
  if (IsWholeSoak()) {
    for (const int64_t clock :
         {kDay, 5 * kYear, now - kYear, now + kYear, 2148595200L, 4102444800L}) {
      TryClock(clock);
    }
  }
}

// The second of three runs goes by a clock before the first's; what happened after that comes with
// the third.
TEST(Clocks, SetBackBetweenTwoRuns) {
  for (const int64_t back : IsWholeSoak() ? std::vector{kDay, kYear} : std::vector{kDay}) {
    const SampleProduct product(SampleProduct::Due::kAll);
    const AgentServer server;
    EXPECT_EQ(RunAgent().exitCode, 0);
    const std::string settings = product.SettingsText();
    const int64_t first = product.Time("rpttm_ui").value_or(-1);
    WriteText(product.BinFolder() / "protsvc.log", FailureAt(first + kHour));
    EXPECT_EQ(RunAt(first - back).exitCode, 0);
    EXPECT_EQ(product.SettingsText(), settings);
    EXPECT_EQ(server.Requests().back().report, "rc1");
    ExpectNear(std::stoull(server.Requests().back().query.at("r")), -back, "r");
    EXPECT_EQ(RunAt(first + 5 * kHour).exitCode, 0);
    EXPECT_THAT(
        server.Bodies("rc7"),
        testing::ElementsAre(testing::_, testing::HasSubstr(std::to_string(first + kHour))));
  }
}

}  // namespace
}  // namespace ostrell
