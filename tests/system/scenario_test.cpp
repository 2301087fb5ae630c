#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "tests/system/agent_run.h"

// The machines that script/run --scenario knows by name.

namespace ostrell {
namespace {

struct Scenario {
  const char* name;
  std::set<std::string> arrived;
  size_t leastUnifiedItems;
  const char* systemFamily;  // of rc1
};

const Scenario kScenarios[] = {
    {"busy", {"rc1", "rc2", "rc3", "rc4", "rc5", "rc7"}, 23000, "11"},
    {"damaged", {"rc7"}, 1, ""},  // without a product version there is no rc1
    {"fresh", {"rc1"}, 0, "11"},
    {"offline", {}, 0, ""},
    {"old", {"rc1", "rc2", "rc3", "rc4", "rc5", "rc7"}, 9, "6"},
};

std::set<std::string> ArrivedAt(const AgentServer& server) {
  std::set<std::string> arrived;
  for (const auto& request : server.Requests()) {
    if (request.method == "PUT" || request.report == "rc1") {
      arrived.insert(request.report);
    }
  }
  return arrived;
}

TEST(Scenario, SendsWhatSuchAMachineHas) {
  for (const Scenario& scenario : kScenarios) {
    SCOPED_TRACE(scenario.name);
    const SampleProduct product(SampleProduct::Due::kAll);
    product.Become(scenario.name);
    AgentServer server;
    const bool isOffline = std::string(scenario.name) == "offline";
    if (isOffline) {
      server.server.Stop();
    }
    EXPECT_EQ(RunAgent().exitCode, 0);
    EXPECT_EQ(ArrivedAt(server), scenario.arrived);
    EXPECT_GE(json_array_size(server.Body("rc7").Get()), scenario.leastUnifiedItems);
    EXPECT_TRUE(!isOffline || !product.Time("rpttm_localinfo"));
    for (const auto& request : server.Requests("rc1")) {
      EXPECT_EQ(request.query.at("s"), scenario.systemFamily);
    }
  }
}

TEST(Scenario, EachHasItsRow) {
  std::set<std::string> known;
  for (const Scenario& scenario : kScenarios) {
    known.insert(scenario.name);
  }
  for (const auto& file : std::filesystem::directory_iterator(OSTRELL_SAMPLE "/scenarios")) {
    EXPECT_EQ(known.erase(file.path().filename()), 1u) << file.path();
  }
  EXPECT_THAT(known, testing::IsEmpty());
}

}  // namespace
}  // namespace ostrell
