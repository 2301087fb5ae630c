#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "tests/system/agent_run.h"

namespace ostrell {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Lt;

constexpr const char* kKeys[] = {"rpttm_ui", "rpttm_li", "rpttm_li_tools", "rpttm_sf",
                                 "rpttm_fp", "rpttm_qf", "rpttm_localinfo"};

std::vector<std::optional<int64_t>> Times(const SampleProduct& product) {
  std::vector<std::optional<int64_t>> times;
  for (const char* key : kKeys) {
    times.push_back(product.Time(key));
  }
  return times;
}

// The reports in the order of their requests, each run of one report once.
std::string Sequence(const AgentServer& server) {
  std::string sequence;
  for (const auto& request : server.Requests()) {
    if (!sequence.ends_with(request.report)) {
      sequence += (sequence.empty() ? "" : " ") + request.report;
    }
  }
  return sequence;
}

// The values of a member in the order of the items; -1 where it is no integer.
std::vector<int64_t> Integers(const JsonOwner& items, const char* member) {
  std::vector<int64_t> values;
  size_t index = 0;
  json_t* item = nullptr;
  json_array_foreach(items.Get(), index, item) {
    values.push_back(Integer64Member(item, member).value_or(-1));
  }
  return values;
}

// Counted by hand in the sample's records: every reported kind, then what the user submitted, also
// of another kind: 6.
void ExpectDetectionLog(const JsonOwner& log) {
  const auto kinds = Integers(log, "fid");
  const auto marks = Integers(log, "submit_record");
  EXPECT_EQ(kinds.size(), 38u);
  EXPECT_THAT(std::set<int64_t>(kinds.begin(), kinds.end()),
              ElementsAre(1, 2, 3, 4, 5, 6, 15, 17, 28, 30, 31, 41, 46, 47, 48, 49, 50, 53, 56, 59,
                          60, 64, 66, 69));
  EXPECT_EQ(std::count(marks.begin(), marks.end(), 1), 10);
  EXPECT_EQ(marks.back(), 1);
  for (const char* member : {"id", "ts", "detail"}) {
    EXPECT_THAT(Integers(log, member), Each(-1)) << member;
  }
}

// Every request says that it is of the machine that the first one, rc1, is of, and of that client.
void ExpectIdentity(const AgentServer& server, const std::string& clientId) {
  auto requests = server.Requests();
  ASSERT_FALSE(requests.empty());
  const std::string machine = requests[0].query["u"];
  EXPECT_EQ(requests[0].report, "rc1");
  EXPECT_EQ(machine.size(), 40u);
  for (auto& request : requests) {
    SCOPED_TRACE(request.report + " " + std::to_string(request.number));
    EXPECT_EQ(request.query["u"], machine);
    EXPECT_EQ(request.query["regid"], clientId);
    if (request.report == "rc4") {
      EXPECT_EQ(request.query["v"], "5");
    }
  }
}

// What popblock_win.cpp writes first, newest first, each item and each other product once.
constexpr auto kPopupBlocks =
    R"([{"product_name":"popblock"},)"
    R"({"product_name":"popblock","gname":"adverts","iname":"popup.example"},)"
    R"({"product_name":"popblock","gname":"adverts","iname":"banner.example","count":3},)"
    R"({"product_name":"deskhelper","gname":"tips","iname":"tip 12"},)"
    R"({"product_name":"softmanager","action":"disable","app":"Helper"},)"
    R"({"product_name":"popblock","gname":"trackers","iname":"banner.example"}])";

TEST(WholeSequence, FirstRunSendsAllAndSecondOnlyTheMachineInformation) {
  const SampleProduct product(SampleProduct::Due::kAll);
  const AgentServer server;
  const auto before = Times(product);
  const std::string statistics = ReadText(product.DataFolder() / "tallyx5.dat");
  EXPECT_EQ(RunAgent().exitCode, 0);
  EXPECT_EQ(Sequence(server), "rc1 rc2 rc5 rc3 rc4 rc7");
  ExpectIdentity(server, server.Requests("rc1").at(0).query["regid"]);

  ExpectDetectionLog(server.Body("rc2"));
  EXPECT_EQ(CompactText(server.Body("rc5")), kPopupBlocks);
  EXPECT_THAT(server.Bodies("rc4"), ElementsAre(statistics.substr(16)));

  // One instant for all of them; that of the statistics is taken after the work.
  const auto now = product.Time("rpttm_ui");
  EXPECT_THAT(before, Each(Lt(now)));
  EXPECT_THAT(Times(product), Each(now));
  EXPECT_GE(product.Time("rpttm_cc"), now);
  const std::string settings = product.SettingsText();
  EXPECT_EQ(RunAgent().exitCode, 0);
  EXPECT_EQ(Sequence(server), "rc1 rc2 rc5 rc3 rc4 rc7 rc1");
  EXPECT_EQ(product.SettingsText(), settings);
}

// A cut answer to the PUT is no success: the same window is sent again. The statistics are gone.
TEST(WholeSequence, WhatFailedIsSentAgainAndStatisticsAreNot) {
  const SampleProduct product(SampleProduct::Due::kAll);
  const std::string clientId = "0A1B2C3D-4E5F-6789-ABCD-EF0123456789";
  product.Registry("add HKLM\\\\SOFTWARE\\\\Velmora\\\\Corvane\\\\app /v ClientID /d " + clientId +
                   " /f");
  AgentServer server;
  server.server.SetFaults({Fault::kPutCut});
  EXPECT_EQ(RunAgent().exitCode, 0);
  EXPECT_EQ(Sequence(server), "rc1 rc2 rc5 rc3 rc4 rc7");
  for (const char* key : {"rpttm_li", "rpttm_li_tools", "rpttm_localinfo"}) {
    EXPECT_EQ(product.Time(key), std::nullopt) << key;
  }
  for (const char* key : {"rpttm_sf", "rpttm_fp", "rpttm_qf"}) {
    EXPECT_EQ(product.Time(key), product.Time("rpttm_ui")) << key;
  }
  EXPECT_TRUE(product.Time("rpttm_cc").has_value());
  server.server.SetFaults({});
  EXPECT_EQ(RunAgent().exitCode, 0);
  EXPECT_EQ(Sequence(server), "rc1 rc2 rc5 rc3 rc4 rc7 rc1 rc2 rc5 rc7");
  ExpectIdentity(server, clientId);
  const auto logs = server.Bodies("rc2");
  ASSERT_EQ(logs.size(), 2u);
  EXPECT_EQ(logs[0], logs[1]);
}

// No older statistics file survives a due run; the time waits for the file itself.
TEST(ScanStatistics, WaitsForTheFile) {
  const SampleProduct product;
  const AgentServer server;
  const auto current = product.DataFolder() / "tallyx5.dat";
  const auto older = product.BinFolder() / "tallyx3.dat";
  std::filesystem::remove(current);
  WriteText(older, "old");
  EXPECT_EQ(RunAgent().exitCode, 0);
  EXPECT_TRUE(std::filesystem::exists(older));  // not due

  product.SetTime("rpttm_cc", 0);
  EXPECT_EQ(RunAgent().exitCode, 0);
  EXPECT_FALSE(std::filesystem::exists(older));
  EXPECT_EQ(product.Time("rpttm_cc"), 0);

  // Not sound, but there: its length says 2^63.
  WriteText(current, std::string(15, '\0') + "\x80" + std::string(100, 'x'));
  EXPECT_EQ(RunAgent().exitCode, 0);
  EXPECT_FALSE(std::filesystem::exists(current));
  EXPECT_GT(product.Time("rpttm_cc"), 0);
  EXPECT_THAT(server.Requests("rc4"), IsEmpty());
}

// Without a database there is nothing to send; it is made for the product's service.
TEST(PopupBlockLog, MissingDatabaseIsMade) {
  const SampleProduct product;
  const AgentServer server;
  const auto database = product.DataFolder() / "adblkuser.db";
  ASSERT_FALSE(std::filesystem::exists(database));
  product.SetTime("rpttm_li_tools", 0);
  EXPECT_EQ(RunAgent().exitCode, 0);
  EXPECT_THAT(server.Requests("rc5"), IsEmpty());
  EXPECT_EQ(product.Time("rpttm_li_tools"), 0);
  EXPECT_TRUE(ReadText(database).starts_with("SQLite format 3"));
}

}  // namespace
}  // namespace ostrell
