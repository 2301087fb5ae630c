#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "tests/system/agent_run.h"

namespace ostrell {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr auto kKey = "rpttm_localinfo";

std::string Member(const json_t* item, const char* name) {
  const json_t* value = json_object_get(item, name);
  return json_is_integer(value)  ? std::to_string(json_integer_value(value))
         : json_is_string(value) ? json_string_value(value)
                                 : "";
}

// Every item by the given members.
std::vector<std::string> Items(const JsonOwner& body, const std::vector<const char*>& members) {
  std::vector<std::string> items;
  size_t index = 0;
  json_t* item = nullptr;
  json_array_foreach(body.Get(), index, item) {
    std::string text;
    for (const char* member : members) {
      text += (text.empty() ? "" : " ") + Member(item, member);
    }
    items.push_back(text);
  }
  return items;
}

std::string MemberNames(const json_t* item) {
  std::string names;
  const char* name = nullptr;
  json_t* value = nullptr;
  json_object_foreach(const_cast<json_t*>(item), name, value) {
    names += (names.empty() ? "" : " ") + std::string(name);
  }
  return names;
}

// The link time in the header of a Windows program.
std::string LinkTime(const std::filesystem::path& program) {
  const std::string bytes = ReadText(program);
  const auto at = [&](size_t offset) {
    uint32_t value = 0;
    for (size_t i = 4; i-- > 0;) {
      value = value << 8 | static_cast<uint8_t>(bytes.at(offset + i));
    }
    return value;
  };
  return std::to_string(at(at(0x3C) + 8));
}

std::vector<std::string> LogLines() {
  return {"log_stats protsvc.log 0 failed 1712345678", "log_stats protsvc.log 0 failed ",
          "log_stats protsvc.log 0 failed ",
          "log_stats qxupdate.exe.log StartService:: 0x00000005 1760000000",
          "log_stats qxupdate.exe.log StartService:: 0x00000005 "};
}

// One run on a new sample, looked at from several sides.
class FirstUnifiedReport : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    product = std::make_unique<SampleProduct>();
    server = std::make_unique<AgentServer>();
    EXPECT_EQ(RunAgent().exitCode, 0);
  }
  static void TearDownTestSuite() {
    server.reset();
    product.reset();
  }

  static inline std::unique_ptr<SampleProduct> product;
  static inline std::unique_ptr<AgentServer> server;
};

TEST_F(FirstUnifiedReport, HoldsWhatTheSampleHolds) {
  const JsonOwner body = server->Body("rc7");
  const std::string linked = LinkTime(product->BinFolder() / "vguard.exe");
  std::vector<std::string> dumps;
  std::vector<std::string> others;
  for (const std::string& item : Items(body, {"report_type", "name", "pattern", "pe-time"})) {
    (item.starts_with("dmp_files") ? dumps : others).push_back(item);
  }
  EXPECT_THAT(dumps,
              testing::UnorderedElementsAre("dmp_files vguard.exe.2816.dmp  " + linked,
                                            "dmp_files vguard.exe.1408.dmp  " + linked,
                                            "dmp_files note.dmp  ", "dmp_files setup.5632.dmp  "));
  std::vector<std::string> expected = LogLines();
  for (const char* event :
       {"Application Error 1000", "Application Error 1000", "Service Control Manager 7009",
        "Service Control Manager 7000", "Service Control Manager 7009"}) {
    expected.push_back("syslog " + std::string(event) + " ");
  }
  EXPECT_EQ(others, expected);
  const auto crashes = Items(body, {"eventdata", "exe-time"});
  EXPECT_THAT(crashes, Contains("vguard.exe 3302122928"));  // c4d265b0
  EXPECT_THAT(crashes, Contains("<Event 0"));               // no named elements

  const std::string common = " u c v d s x ma mi bu re r";
  EXPECT_EQ(MemberNames(json_array_get(body.Get(), json_array_size(body.Get()) - 1)),
            "report_type name timestamp pattern" + common);
  EXPECT_FALSE(std::filesystem::exists(product->BinFolder() / "vguard.exe.0352.dmp"));
  EXPECT_TRUE(std::filesystem::exists(product->BinFolder() / "vguard.exe.0704.dmp"));
}

TEST_F(FirstUnifiedReport, ClientFieldsAreThoseOfTheMachineInformation) {
  const auto machine = server->Requests("rc1");
  const auto unified = server->Requests("rc7");
  ASSERT_EQ(machine.size(), 1u);
  ASSERT_EQ(unified.size(), 2u);  // ticket and upload
  for (const char* key : {"u", "c", "s", "x", "regid"}) {
    EXPECT_EQ(unified[0].query.at(key), machine[0].query.at(key)) << key;
  }
  const JsonOwner body = server->Body("rc7");
  size_t index = 0;
  json_t* item = nullptr;
  json_array_foreach(body.Get(), index, item) {
    for (const char* key : {"u", "c", "v", "d", "s", "x", "ma", "mi", "bu", "re"}) {
      EXPECT_EQ(Member(item, key), machine[0].query.at(key)) << key;
    }
    // Without an earlier report the gap is the time itself, which is what was recorded.
    EXPECT_EQ(Member(item, "r"), std::to_string(product->Time(kKey).value_or(-1)));
  }
}

TEST_F(FirstUnifiedReport, TellsItsStory) {
  std::vector<std::string> operations;
  for (const std::string& message : product->Messages()) {
    const std::string operation = message.substr(0, message.find(' '));
    if (operations.empty() || operations.back() != operation) {
      operations.push_back(operation);
    }
  }
  EXPECT_THAT(
      operations,
      ElementsAre("post_unified_report", "cleanup_old_dump_files_in_directory",
                  "collect_dump_files", "GetCrashModuleFromDump", "collect_log_stats",
                  "collect_matching_entries", "collect_log_stats", "collect_matching_entries",
                  "collect_log_stats", "collect_event_logs", "post_unified_report",
                  "add_common_fields_to_unified_array", "post_unified_report"));
  // Those beside the program are counted twice.
  EXPECT_THAT(product->Messages(),
              Contains("collect_dump_files Scan completed, found 7 dump files within time range"));
}

TEST(UnifiedReport, PeriodBeginsWithTheLastOne) {
  const SampleProduct product;
  const AgentServer server;
  RunAgent();
  const auto recorded = product.Time(kKey);
  ASSERT_TRUE(recorded.has_value());
  RunAgent();
  EXPECT_EQ(server.Requests("rc7").size(), 2u);  // not due
  EXPECT_EQ(product.Time(kKey), recorded);
  EXPECT_THAT(product.Messages().back(), HasSubstr("< 14400), skip unified reporting"));

  // Nearly three days ago: one dump, log line and event of the sample are older.
  const int64_t last = *recorded - 259140;
  product.SetTime(kKey, last);
  RunAgent();
  const auto requests = server.Requests("rc7");
  ASSERT_EQ(requests.size(), 4u);
  EXPECT_THAT(product.Messages().back(), HasSubstr("Unified report completed: 11 items, result=1"));
  EXPECT_GE(product.Time(kKey).value_or(0), *recorded);
}

TEST(UnifiedReport, UploadThatFailsIsSentAgain) {
  const SampleProduct product;
  AgentServer server;
  server.server.SetFaults({Fault::kPutCut});
  RunAgent();
  EXPECT_EQ(product.Time(kKey), std::nullopt);
  EXPECT_THAT(product.Messages().back(), HasSubstr("Unified report completed: 14 items, result=0"));
  server.server.SetFaults({});
  RunAgent();
  EXPECT_TRUE(product.Time(kKey).has_value());
  EXPECT_EQ(product.Messages().back(),
            "post_unified_report Unified report completed: 14 items, result=1");
}

// A Windows that has no structured event log: there is nothing in the older one under Wine.
TEST(UnifiedReport, OldWindowsReadsTheClassicEventLog) {
  const SampleProduct product;
  const AgentServer server;
  const std::string key = "HKCU\\\\Software\\\\Wine\\\\AppDefaults\\\\ostrell.exe";
  product.Registry("add " + key + " /v Version /d winxp64 /f");
  EXPECT_EQ(RunAgent().exitCode, 0);
  product.Registry("delete " + key + " /f");
  const auto types = Items(server.Body("rc7"), {"report_type"});
  EXPECT_EQ(types.size(), 9u);
  EXPECT_THAT(types, Not(Contains("syslog")));
  EXPECT_THAT(product.Messages(), Contains("collect_event_logs No events to collect, return NULL"));
}

}  // namespace
}  // namespace ostrell
