#include <gtest/gtest.h>

#include "tests/system/agent_run.h"

namespace ostrell {
namespace {

struct Missing {
  const char* name;
  std::vector<const char*> libraries;
  bool sent;
  const char* customer;  // of the request, when one was sent
  bool recorded;
  bool hasStore;
};

class MissingLibrary : public testing::TestWithParam<Missing> {};

TEST_P(MissingLibrary, RunGoesOn) {
  const SampleProduct product;
  const AgentServer server;
  for (const char* library : GetParam().libraries) {
    ASSERT_TRUE(std::filesystem::remove(product.BinFolder() / library)) << library;
  }
  EXPECT_EQ(RunAgent().exitCode, 0);
  const auto requests = server.Requests("rc1");
  ASSERT_EQ(requests.size(), GetParam().sent ? 1u : 0u);
  if (GetParam().sent) {
    EXPECT_EQ(requests[0].query.at("c"), GetParam().customer);
  }
  EXPECT_EQ(product.Time("rpttm_ui").has_value(), GetParam().recorded);
  // The unified report needs none of them: without a store it is due and not recorded.
  EXPECT_GT(json_array_size(server.Body("rc7").Get()), 0u);
  EXPECT_EQ(product.Time("rpttm_localinfo").has_value(), GetParam().hasStore);
}

INSTANTIATE_TEST_SUITE_P(
    ClosedLibraries, MissingLibrary,
    testing::Values(
        Missing{"crashsentry", {"crashsentry.dll"}, true, "4711", true, true},
        Missing{"tracelog", {"tracelog.dll"}, true, "4711", true, true},
        // No document: the customer id is the registry's. No store: nothing is recorded.
        Missing{"policydb", {"policydb.dll"}, true, "1234", false, false},
        // The stream that takes the answer is opened before the request.
        Missing{"svclink", {"svclink.dll"}, false, "", false, true},
        Missing{"all",
                {"crashsentry.dll", "tracelog.dll", "policydb.dll", "svclink.dll"},
                false,
                "",
                false,
                false}),
    [](const auto& info) { return std::string(info.param.name); });

// The settings file is damaged: there is no store, and the file stays as it is.
TEST(ClosedLibraries, StoreThatDoesNotOpen) {
  const SampleProduct product;
  const AgentServer server;
  const auto file = product.DataFolder() / "settings/ostrell.json";
  WriteText(file, "{\"int64\": ");
  EXPECT_EQ(RunAgent().exitCode, 0);
  EXPECT_EQ(server.Requests("rc1").size(), 1u);
  EXPECT_EQ(ReadText(file), "{\"int64\": ");
}

}  // namespace
}  // namespace ostrell
