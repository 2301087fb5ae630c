#include <fmt/core.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "tests/soak/soak.h"
#include "tests/system/agent_run.h"

// What SECURITY.md says that others may try, tried on the shipped program: each plants something,
// and the run has to end with 0, send what is named and nothing that leads to the victim.

namespace ostrell {
namespace {

namespace fs = std::filesystem;

using Reports = std::set<std::string>;
const Reports kAll = {"rc1", "rc2", "rc3", "rc4", "rc5", "rc7"};

Reports AllBut(const Reports& missing) {
  Reports reports;
  std::ranges::set_difference(kAll, missing, std::inserter(reports, reports.end()));
  return reports;
}

struct Stage {
  const SampleProduct& product;
  std::string& environment;
};

struct Attempt {
  std::string what;
  void (*plant)(const Stage&);
  Reports sent = kAll;  // a body arrived; of rc1 the question
};

fs::path Victim(const SampleProduct& product) {
  return product.InstallFolder().parent_path().parent_path().parent_path() / "victim.txt";
}

// A record of a file that the user submitted, for each path.
void SubmitPaths(const SampleProduct& product, const std::vector<std::string>& paths) {
  const fs::path file = product.DataFolder() / "records.json";
  const JsonOwner records(json_load_file(file.c_str(), 0, nullptr));
  const json_int_t now = std::time(nullptr);
  for (const std::string& path : paths) {
    json_array_append_new(records.Get(), json_pack("{s:I, s:i, s:{s:s}}", "ts", now - 60, "fid",
                                                   std::numeric_limits<int32_t>::min() + 1,
                                                   "detail", "pathname", path.c_str()));
  }
  EXPECT_EQ(json_dump_file(records.Get(), file.c_str(), 0), 0);
}

// A hot journal of SQLite that names another as the transaction's own.
void PlantJournal(const SampleProduct& product) {
  constexpr char kMagic[] = "\xD9\xD5\x05\xF9\x20\xA1\x63\xD7";
  const auto number = [](uint32_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
      bytes += static_cast<char>(value >> shift);
    }
    return bytes;
  };
  const std::string name = "C:\\victim.txt";
  uint32_t sum = 0;
  for (const char letter : name) {
    sum += static_cast<uint8_t>(letter);
  }
  std::string journal = kMagic + number(0) + number(0) + number(4) + number(512) + number(4096);
  journal.resize(512);
  journal += number(1 << 18 | 1) + name + number(static_cast<uint32_t>(name.size())) + number(sum) +
             kMagic;
  WriteText(product.DataFolder() / "adblkuser.db-journal", journal);
}

const Attempt kAttempts[] = {
    {"proxies in the environment",
     [](const Stage& stage) {
       for (const char* name : {"http_proxy", "https_proxy", "HTTPS_PROXY", "ALL_PROXY"}) {
         stage.environment += fmt::format("{}=http://127.0.0.1:9 ", name);
       }
     }},
    {"libraries along the path",
     [](const Stage& stage) {
       const fs::path folder = stage.product.DataFolder() / "planted";
       fs::create_directory(folder);
       for (const char* name : {"jansson.dll", "policydb.dll", "secur32.dll", "dbghelp.dll"}) {
         WriteText(folder / name, "no library");
       }
       stage.environment += "WINEPATH='" + folder.string() + "' ";
     }},
    {"recorded paths to pipes, devices, shares, folders, streams",
     [](const Stage& stage) {
       SubmitPaths(stage.product,
                   {R"(\\.\pipe\victim)", R"(\\.\PhysicalDrive0)", R"(\\127.0.0.1\victim\a)",
                    R"(\\?\GLOBALROOT\victim)", R"(C:\victim.txt:victim)", "NUL", "CON",
                    R"(C:\Windows)", R"(C:\*)", "C:\\victim" + std::string(300, 'x'), "", "\n"});
     }},
    {"a journal that names the victim", [](const Stage& stage) { PlantJournal(stage.product); },
     AllBut({"rc5"})},
    {"a database of garbage",
     [](const Stage& stage) {
       WriteText(stage.product.DataFolder() / "adblkuser.db", std::string(100000, 'v'));
     },
     AllBut({"rc5"})},
    {"times as far as they go",
     [](const Stage& stage) {
       stage.product.Set("int64", "rpttm_li", std::numeric_limits<int64_t>::min());
       stage.product.Set("int64", "rpttm_localinfo", std::numeric_limits<int64_t>::max());
     },
     AllBut({"rc7"})},
    {"a version of a megabyte",
     [](const Stage& stage) {
       WriteText(stage.product.InstallFolder() / "VERSION", std::string(1 << 20, '9'));
     },
     AllBut({"rc1"})},
    {"a document of brackets",
     [](const Stage& stage) {
       WriteText(stage.product.DataFolder() / "documents/25.json", std::string(1 << 20, '['));
     }},
    {"statistics whose length lies",
     [](const Stage& stage) {
       WriteText(stage.product.DataFolder() / "tallyx5.dat", std::string(16, '\xFF') + "x");
     },
     AllBut({"rc4"})},
    {"dumps whose lists lie",
     [](const Stage& stage) {
       for (int i = 0; i < 200; ++i) {
         WriteText(stage.product.BinFolder() / fmt::format("{}.dmp", i),
                   "MDMP" + std::string(300, '\xFF'));
       }
     }},
    {"a log of one line",
     [](const Stage& stage) {
       WriteText(stage.product.BinFolder() / "protsvc.log", std::string(64 << 20, '['));
     }},
};

class AttemptsTest : public testing::Test {
 protected:
  // One run, and what came of it in a line.
  static void Try(const Attempt& attempt) {
    SCOPED_TRACE(attempt.what);
    const SampleProduct product(SampleProduct::Due::kAll);
    WriteText(Victim(product), "victim");
    AgentServer server;
    std::string environment;
    attempt.plant({product, environment});
    const RunResult run = RunAgent("-all", environment);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(ReadText(Victim(product)), "victim");
    Reports arrived;
    for (const auto& request : server.Requests()) {
      const auto path = request.query.find("p");
      EXPECT_TRUE(path == request.query.end() || path->second.starts_with("C:\\Users\\"));
      if (request.method == "PUT" || request.report == "rc1") {
        arrived.insert(request.report);
      }
    }
    EXPECT_EQ(arrived, attempt.sent);
    std::cout << fmt::format("{:62} exit {} {:3} requests {:6} ms {:3} MiB\n", attempt.what,
                             run.exitCode, server.Requests().size(), run.wall.count(),
                             run.peakBytes >> 20);
  }
};

TEST_F(AttemptsTest, OnTheMachine) {
  for (size_t i = 0; i < std::size(kAttempts); i += SoakStep(5)) {
    Try(kAttempts[i]);
  }
}

// An account that may write neither in the data folder nor to the machine's registry: every run is
// the first one. Wine guards no registry, so there the call fails instead.
TEST_F(AttemptsTest, OrdinaryUser) {
  if (!IsWholeSoak() || geteuid() != 0) {
    GTEST_SKIP() << "whole soaks only, which root may begin";
  }
  const SampleProduct product(SampleProduct::Due::kAll);
  const std::string prefix = (Victim(product).parent_path().parent_path()).string();
  const auto shell = [](const std::string& command) {
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
  };
  fs::copy(OSTRELL_FAULTY_CRASHSENTRY, product.BinFolder() / "crashsentry.dll",
           fs::copy_options::overwrite_existing);
  WriteText(product.BinFolder() / "faults.txt", "lasting RegSetValueExW 1\nRegSetValueExW 5 5\n");
  const std::string settings = product.SettingsText();
  StopWine();
  shell(fmt::format("chown -R 65534 '{}' && chown -R 0 '{}' && chmod -R a-w,a+rX '{}'", prefix,
                    product.DataFolder().string(), product.DataFolder().string()));
  std::set<std::string> clients;
  for (int run = 0; run < 2; ++run) {
    AgentServer server;
    EXPECT_EQ(RunAgent("-all", "setpriv --reuid=65534 --clear-groups env ").exitCode, 0);
    Reports arrived;
    for (const auto& request : server.Requests()) {
      arrived.insert(request.report);
      clients.insert(request.query.at("regid"));
    }
    EXPECT_EQ(arrived, AllBut({"rc5"}));
    std::cout << fmt::format("ordinary user, run {}: {} requests\n", run + 1,
                             server.Requests().size());
  }
  EXPECT_EQ(clients.size(), 2u);
  EXPECT_EQ(product.SettingsText(), settings);
  StopWine("setpriv --reuid=65534 --clear-groups ");
  shell(fmt::format("chmod -R u+w '{0}' && chown -R 0 '{0}'", prefix));
}

}  // namespace
}  // namespace ostrell
