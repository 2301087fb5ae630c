#include <gtest/gtest.h>

#include "tests/system/agent_run.h"

namespace ostrell {
namespace {

struct Missing {
  std::vector<const char*> libraries;
  bool sent;
  const char* customer;  // of the request, when one was sent
  bool recorded;
  bool hasStore;
};

const Missing kMissing[] = {
    // No document: the customer id is the registry's, which the next run deletes. No store: nothing
    // is recorded.
    {{"policydb.dll"}, true, "1234", false, false},
    {{"crashsentry.dll"}, true, "4711", true, true},
    {{"tracelog.dll"}, true, "4711", true, true},
    // The stream that takes the answer is opened before the request.
    {{"svclink.dll"}, false, "", false, true},
    {{"crashsentry.dll", "tracelog.dll", "policydb.dll", "svclink.dll"}, false, "", false, false}};

TEST(ClosedLibraries, RunGoesOnWithoutThem) {
  const SampleProduct product;
  const std::string settings = product.SettingsText();
  for (const Missing& missing : kMissing) {
    SCOPED_TRACE(missing.libraries.front());
    const AgentServer server;
    WriteText(product.DataFolder() / "settings/ostrell.json", settings);
    for (const char* library : missing.libraries) {
      std::filesystem::rename(product.BinFolder() / library, product.DataFolder() / library);
    }
    EXPECT_EQ(RunAgent().exitCode, 0);
    const auto requests = server.Requests("rc1");
    EXPECT_EQ(requests.size(), missing.sent ? 1u : 0u);
    if (!requests.empty()) {
      EXPECT_EQ(requests[0].query.at("c"), missing.customer);
    }
    EXPECT_EQ(product.Time("rpttm_ui").has_value(), missing.recorded);
    // The unified report needs none of them: without a store it is due and not recorded.
    EXPECT_GT(json_array_size(server.Body("rc7").Get()), 0u);
    EXPECT_EQ(product.Time("rpttm_localinfo").has_value(), missing.hasStore);
    for (const char* library : missing.libraries) {
      std::filesystem::rename(product.DataFolder() / library, product.BinFolder() / library);
    }
  }
}

}  // namespace
}  // namespace ostrell
