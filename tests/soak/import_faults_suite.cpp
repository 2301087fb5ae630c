#include <fmt/core.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/soak/soak.h"
#include "tests/system/agent_run.h"

// The shipped program, all reports due, once for each call of an import that can fail: that call
// fails, or it and all later ones of its name, or the process ends there. What can fail stands in
// program_imports.txt; which calls there are comes from a run that counts.

namespace ostrell {
namespace {

namespace fs = std::filesystem;

const std::map<std::string, std::string> kReportOfKey = {{"rpttm_ui", "rc1"},
                                                         {"rpttm_li", "rc2"},
                                                         {"rpttm_li_tools", "rc5"},
                                                         {"rpttm_localinfo", "rc7"}};

// What a run may change or delete, by the end of its path: what is logged, recorded, consumed or
// cleaned up, and what these tests put there.
constexpr const char* kMayChange[] = {"/tracelog.txt",
                                      "/settings/ostrell.json",
                                      "/adblkuser.db",
                                      "/adblkuser.db-wal",
                                      "/adblkuser.db-shm",
                                      "/adblkuser.db-journal",
                                      "/tallyx5.dat",
                                      "/tallyx.dat",
                                      "/tallyx1.dat",
                                      "/tallyx2.dat",
                                      "/tallyx3.dat",
                                      "/tallyx4.dat",
                                      "/vguard.exe.0352.dmp",
                                      "/faults.txt",
                                      "/calls.txt"};

using Content = std::map<std::string, std::string>;  // of files by path

Content ContentOf(const fs::path& folder) {
  Content content;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const std::string path = entry.path().string();
    const bool mayChange = std::ranges::any_of(
        kMayChange, [&path](const char* ending) { return path.ends_with(ending); });
    if (entry.is_regular_file() && !mayChange) {
      content[path] = ReadText(entry.path());
    }
  }
  return content;
}

struct Point {
  std::string name;
  int64_t call;
};

class ImportFaults : public testing::Test {
 protected:
  void SetUp() override {
    product = std::make_unique<SampleProduct>(SampleProduct::Due::kAll);
    fs::copy(OSTRELL_FAULTY_CRASHSENTRY, product->BinFolder() / "crashsentry.dll",
             fs::copy_options::overwrite_existing);
    Copy(product->DataFolder(), kept / "data");
    Copy(product->InstallFolder(), kept / "install");
    before = Unchanged();
    for (const auto& [key, report] : kReportOfKey) {
      timesBefore[key] = product->Time(key);
    }
  }
  void TearDown() override { fs::remove_all(kept); }

  static void Copy(const fs::path& from, const fs::path& to) {
    fs::remove_all(to);
    fs::create_directories(to.parent_path());
    // Times of writing decide what is reported: they are copied, too.
    EXPECT_EQ(std::system(fmt::format("cp -a '{}' '{}'", from.string(), to.string()).c_str()), 0);
  }
  void Restore() const {
    Copy(kept / "data", product->DataFolder());
    Copy(kept / "install", product->InstallFolder());
  }
  Content Unchanged() const {
    Content content = ContentOf(product->DataFolder());
    content.merge(ContentOf(product->InstallFolder()));
    return content;
  }

  // A run on the sample as it was made.
  void Run(const std::string& mode, const Point& point) {
    Restore();
    server.reset();  // what it keeps grows
    server = std::make_unique<AgentServer>();
    looked = 0;
    WriteText(product->BinFolder() / "faults.txt",
              fmt::format("{} {} {}\n", mode, point.name, point.call) + Table());
    ++runs;
    RunToItsEnd();
  }
  static void RunToItsEnd() {
    const RunResult run = RunAgent("-all", "timeout 300 env ");
    EXPECT_EQ(run.exitCode, 0) << "ended with this code; 124: it did not end";
  }

  // Those of the imports that can fail, as the program's new crash handler reads them.
  static std::string Table() {
    std::string table;
    std::istringstream lines(ReadText(OSTRELL_PROGRAM_IMPORTS));
    for (std::string line; std::getline(lines, line);) {
      table += line.starts_with('#') || line.find(' ') == std::string::npos ? "" : line + "\n";
    }
    return table;
  }

  // Every call that can fail, as a run counts them.
  std::vector<Point> Points() {
    Run("count", {"none", 0});
    EXPECT_EQ(Recorded().size(), kReportOfKey.size());
    std::vector<Point> points;
    std::istringstream lines(ReadText(product->BinFolder() / "calls.txt"));
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words(line);
      Point point{};
      int64_t calls = 0;
      words >> point.name >> calls;
      for (point.call = 1; point.call <= calls; ++point.call) {
        points.push_back(point);
      }
    }
    return points;
  }

  std::set<std::string> Recorded() const {
    std::set<std::string> keys;
    for (const auto& [key, report] : kReportOfKey) {
      if (product->Time(key) > timesBefore.at(key)) {
        keys.insert(key);
      }
    }
    return keys;
  }

  // The reports that arrived since the last look; no request and no body twice.
  std::set<std::string> Arrived() {
    std::set<std::string> arrived;
    std::multiset<std::string> seen;
    auto requests = server->Requests();
    requests.erase(requests.begin(), requests.begin() + looked);
    looked += std::ssize(requests);
    for (const auto& request : requests) {
      std::string shape = request.method + request.report;
      for (const auto& [key, value] : request.query) {
        shape.append(" ").append(key).append("=").append(value);
      }
      seen.insert(shape);
      EXPECT_EQ(seen.count(shape), 1u) << shape;
      if (request.method == "PUT" || request.report == "rc1") {
        arrived.insert(request.report);
      }
    }
    return arrived;
  }

  void ExpectSound(const std::set<std::string>& arrived) const {
    for (const std::string& key : Recorded()) {
      EXPECT_TRUE(arrived.contains(kReportOfKey.at(key))) << key << " recorded";
    }
    const Content after = Unchanged();
    for (const auto& [path, content] : before) {
      EXPECT_TRUE(after.contains(path) && after.at(path) == content) << path << " changed";
    }
    for (const auto& [path, content] : after) {
      EXPECT_TRUE(before.contains(path)) << path << " is new";
    }
  }

  // Nothing that the first run had not recorded is lost.
  void ExpectNextRunBringsTheRest(const std::set<std::string>& first) {
    const auto recorded = Recorded();
    fs::remove(product->BinFolder() / "faults.txt");
    RunToItsEnd();
    const auto second = Arrived();
    for (const auto& [key, report] : kReportOfKey) {
      EXPECT_TRUE((recorded.contains(key) ? first : second).contains(report)) << key;
    }
    EXPECT_EQ(Recorded().size(), kReportOfKey.size());
  }

  void Try(const std::string& mode, const Point& point) {
    SCOPED_TRACE(fmt::format("{} {} {}", mode, point.name, point.call));
    Run(mode, point);
    const auto arrived = Arrived();
    ExpectSound(arrived);
    if (mode == "end") {
      ExpectNextRunBringsTheRest(arrived);
    }
  }

  std::unique_ptr<AgentServer> server;
  std::unique_ptr<SampleProduct> product;
  const fs::path kept = fs::temp_directory_path() / fmt::format("ostrell_faults_{}", getpid());
  Content before;
  std::map<std::string, std::optional<int64_t>> timesBefore;
  ptrdiff_t looked = 0;  // requests
  int64_t runs = 0;
};

TEST_F(ImportFaults, EveryImportIsKnown) {
  std::istringstream known(ReadText(OSTRELL_PROGRAM_IMPORTS));
  std::set<std::string> names;
  for (std::string line; std::getline(known, line);) {
    names.insert(line.substr(0, line.find(' ')));
  }
  Run("count", {"none", 0});
  std::istringstream calls(ReadText(product->BinFolder() / "calls.txt"));
  for (std::string line; std::getline(calls, line);) {
    EXPECT_TRUE(names.contains(line.substr(0, line.find(' ')))) << line;
  }
}

// What has broken the program before.
TEST_F(ImportFaults, WhatOnceBrokeIt) {
  Try("lasting", {"malloc", 380});  // no memory for an exception, nor for the lock of its reserve
  Try("lasting", {"GetProcAddress", 3});  // the TLS library is missing at the second request, too
  Try("once", {"InitializeCriticalSectionAndSpinCount", 1});
  Try("lasting", {"FileTimeToLocalFileTime", 1});  // new dumps looked old
}

TEST_F(ImportFaults, EveryCallFails) {
  const std::vector<Point> points = Points();
  EXPECT_GT(points.size(), 1000u);
  int64_t ordinal = 0;
  for (const Point& point : points) {
    for (const char* mode : {"once", "lasting", "end"}) {
      if (ordinal++ % SoakStep(3001) == 0) {
        Try(mode, point);
      }
    }
  }
  std::cout << points.size() << " calls that can fail, " << runs << " runs\n";
}

}  // namespace
}  // namespace ostrell
