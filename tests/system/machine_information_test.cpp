#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/system/agent_run.h"

namespace ostrell {
namespace {

using testing::MatchesRegex;

// The one machine information report of a run.
AgentServer::Request OnlyRequest(const AgentServer& server) {
  const auto requests = server.Requests("rc1");
  EXPECT_EQ(requests.size(), 1u);
  return requests.empty() ? AgentServer::Request{} : requests.front();
}

const char kGuid[] = "[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}";

TEST(MachineInformation, FirstRunSendsEveryField) {
  const SampleProduct product;
  const AgentServer server;
  EXPECT_EQ(RunAgent().exitCode, 0);

  auto request = OnlyRequest(server);
  EXPECT_EQ(request.report, "rc1");
  EXPECT_EQ(request.method, "GET");
  // A Wine prefix has no storage descriptor texts and no PCI adapters: the adapter's status is 5.
  EXPECT_THAT(request.query["u"], MatchesRegex("[0-9A-F]{32}00000500"));
  EXPECT_THAT(request.query["regid"], MatchesRegex("\\{" + std::string(kGuid) + "\\}"));
  EXPECT_EQ(request.query["c"], "4711");         // documents/25.json
  EXPECT_EQ(request.query["v"], "6.0.3.27");     // VERSION
  EXPECT_EQ(request.query["d"], "20261101003");  // the newest of sigdb
  EXPECT_EQ(request.query["s"], "11");           // a new Wine prefix calls itself Windows 7
  EXPECT_EQ(request.query["x"], "1");
  EXPECT_EQ(request.query["ma"] + "." + request.query["mi"] + "." + request.query["bu"] + "." +
                request.query["re"],
            "6.1.7601.21863");  // the version of Wine 8's ntoskrnl.exe
  EXPECT_EQ(request.query.size(), 12u);

  // Without an earlier report the gap is the time itself, which is what was recorded.
  const auto recorded = product.Time("rpttm_ui");
  ASSERT_TRUE(recorded.has_value());
  EXPECT_EQ(request.query["r"], std::to_string(*recorded));
}

TEST(MachineInformation, SecondRunSendsTheGapAndKeepsTheTime) {
  const SampleProduct product;
  const AgentServer server;
  RunAgent();
  const auto recorded = product.Time("rpttm_ui");
  EXPECT_EQ(RunAgent().exitCode, 0);

  auto requests = server.Requests("rc1");
  ASSERT_EQ(requests.size(), 2u);
  auto& first = requests[0].query;
  auto& second = requests[1].query;
  EXPECT_EQ(second["u"], first["u"]);
  EXPECT_THAT(second["regid"], MatchesRegex(kGuid));
  EXPECT_EQ("{" + second["regid"] + "}", first["regid"]);
  EXPECT_LT(std::stoull(second["r"]), 86401u);
  EXPECT_EQ(product.Time("rpttm_ui"), recorded);
}

TEST(MachineInformation, OldTimeAdvancesAndTimeInTheFutureWraps) {
  const SampleProduct product;
  const AgentServer server;
  product.SetTime("rpttm_ui", 1000);
  RunAgent();
  const auto recorded = product.Time("rpttm_ui");
  ASSERT_TRUE(recorded.has_value());
  EXPECT_EQ(OnlyRequest(server).query["r"], std::to_string(*recorded - 1000));

  const int64_t future = int64_t{1} << 40;
  product.SetTime("rpttm_ui", future);
  RunAgent();
  const auto requests = server.Requests("rc1");
  ASSERT_EQ(requests.size(), 2u);
  const uint64_t gap = std::stoull(requests[1].query.at("r"));
  EXPECT_GE(gap + static_cast<uint64_t>(future), static_cast<uint64_t>(*recorded));
  EXPECT_LT(gap + static_cast<uint64_t>(future), uint64_t{1} << 39);
  EXPECT_EQ(product.Time("rpttm_ui"), future);
}

// A customer id of the document takes the place of the user's registry value and removes it.
TEST(MachineInformation, CustomerIdFromTheRegistryWithoutTheDocument) {
  const SampleProduct product;
  const AgentServer server;
  const std::string key = "HKCU\\\\SOFTWARE\\\\Velmora\\\\Corvane";
  product.Registry("query " + key + " /v cid");
  const auto document = product.DataFolder() / "documents/25.json";
  const std::string text = ReadText(document);
  std::filesystem::remove(document);
  RunAgent();
  EXPECT_EQ(OnlyRequest(server).query["c"], "1234");  // registry.reg
  product.Registry("query " + key + " /v cid");
  WriteText(document, text);
  RunAgent();
  std::filesystem::remove(document);
  RunAgent();
  const auto requests = server.Requests("rc1");
  ASSERT_EQ(requests.size(), 3u);
  EXPECT_EQ(requests[1].query.at("c"), "4711");
  EXPECT_EQ(requests[2].query.at("c"), "0");
}

TEST(MachineInformation, WithoutAValidVersionNothingIsSent) {
  const SampleProduct product;
  const AgentServer server;
  const auto file = product.InstallFolder() / "VERSION";
  // No file, sixteen bytes, a number that is too large.
  for (const char* text : {"", "255.255.255.255\n", "5.0.300.1"}) {
    std::filesystem::remove(file);
    if (*text != '\0') {
      WriteText(file, text);
    }
    EXPECT_EQ(RunAgent().exitCode, 0) << text;
  }
  EXPECT_TRUE(server.Requests("rc1").empty());
  EXPECT_EQ(product.Time("rpttm_ui"), std::nullopt);
}

TEST(MachineInformation, BadAnswerLeavesTheTimeUnchanged) {
  const SampleProduct product;
  AgentServer server;
  size_t runs = 0;
  for (const Fault fault :
       {Fault::kStatus404, Fault::kGarbage, Fault::kCut, Fault::kEndless, Fault::kRedirect,
        Fault::kNotJson, Fault::kBadSize, Fault::kBadExtension, Fault::kShort}) {
    server.server.SetFaults({fault});
    EXPECT_EQ(RunAgent().exitCode, 0);
    EXPECT_EQ(server.Requests("rc1").size(), ++runs) << static_cast<int>(fault);
    EXPECT_EQ(product.Time("rpttm_ui"), std::nullopt) << static_cast<int>(fault);
  }
}

TEST(MachineInformation, ServerThatDoesNotListen) {
  const SampleProduct product;
  EXPECT_EQ(RunAgent().exitCode, 0);
  EXPECT_EQ(product.Time("rpttm_ui"), std::nullopt);
}

}  // namespace
}  // namespace ostrell
