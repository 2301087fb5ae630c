#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/system/agent_run.h"

// Two runs of all reports against the sample product, looked at from several sides.

namespace ostrell {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Lt;
using testing::MatchesRegex;
using testing::Not;
using testing::UnorderedElementsAre;

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

// A member of every item.
std::vector<std::string> Members(const JsonOwner& items, const char* name) {
  std::vector<std::string> members;
  for (const json_t* const item : Elements(items.Get())) {
    const json_t* value = json_object_get(item, name);
    members.push_back(json_is_integer(value)  ? std::to_string(json_integer_value(value))
                      : json_is_string(value) ? json_string_value(value)
                                              : "");
  }
  return members;
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

// The files of the drive and what they hold, by their names below it.
std::map<std::string, std::string> FilesOf(const std::filesystem::path& drive) {
  std::map<std::string, std::string> files;
  for (const char* folder : {"Program Files", "ProgramData", "users"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(drive / folder)) {
      if (entry.is_regular_file()) {
        files[entry.path().lexically_relative(drive).string()] = ReadText(entry.path());
      }
    }
  }
  return files;
}

// The names of those that are not the same in both.
std::vector<std::string> Differences(const std::map<std::string, std::string>& a,
                                     const std::map<std::string, std::string>& b) {
  std::vector<std::pair<const std::string, std::string>> different;
  std::ranges::set_symmetric_difference(a, b, std::back_inserter(different));
  std::set<std::string> names;
  for (const auto& [name, content] : different) {
    names.insert(name);
  }
  return {names.begin(), names.end()};
}

const std::string kGuid = "[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}";

class FullRun : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    product = std::make_unique<SampleProduct>(SampleProduct::Due::kAll);
    statistics = ReadText(product->DataFolder() / "tallyx5.dat");
    before = Times(*product);
    filesBefore = FilesOf(Drive());
    server = std::make_unique<AgentServer>();
    const RunJudge judge(*product);
    EXPECT_EQ(RunAgent().exitCode, 0);
    isSound = judge.FindsAllThatWasDue();
    after = Times(*product);
    settings = product->SettingsText();
    filesAfter = FilesOf(Drive());
    EXPECT_EQ(RunAgent().exitCode, 0);
  }
  static void TearDownTestSuite() {
    server.reset();
    product.reset();
  }

  static std::filesystem::path Drive() {
    return product->DataFolder().parent_path().parent_path().parent_path();
  }

  static inline std::unique_ptr<SampleProduct> product;
  static inline std::unique_ptr<AgentServer> server;
  static inline bool isSound = false;
  static inline std::string statistics;
  static inline std::string settings;  // after the first run
  static inline std::vector<std::optional<int64_t>> before;
  static inline std::vector<std::optional<int64_t>> after;
  static inline std::map<std::string, std::string> filesBefore;
  static inline std::map<std::string, std::string> filesAfter;
};

TEST_F(FullRun, MachineInformation) {
  const auto requests = server->Requests("rc1");
  ASSERT_FALSE(requests.empty());
  auto query = requests[0].query;
  // A Wine prefix has no storage descriptor texts and no PCI adapters: the adapter's status is 5.
  EXPECT_THAT(query["u"], MatchesRegex("[0-9A-F]{32}00000500"));
  EXPECT_THAT(query["regid"], MatchesRegex("\\{" + kGuid + "\\}"));
  EXPECT_EQ(query["c"], "4711");         // documents/25.json
  EXPECT_EQ(query["v"], "6.0.3.27");     // VERSION
  EXPECT_EQ(query["d"], "20261101003");  // the newest of sigdb
  EXPECT_EQ(query["s"], "11");           // a new Wine prefix calls itself Windows 7
  EXPECT_EQ(query["x"], "1");
  EXPECT_EQ(query["ma"] + "." + query["mi"] + "." + query["bu"] + "." + query["re"],
            "6.1.7601.21863");  // the version of Wine 8's ntoskrnl.exe
  EXPECT_EQ(query["r"], std::to_string(after[0].value_or(-1)));
  // The second run knows the client by what the first one has stored.
  for (auto& request : server->Requests()) {
    EXPECT_EQ(request.query["u"], query["u"]) << request.report;
    EXPECT_THAT(query["regid"], testing::HasSubstr(request.query["regid"])) << request.report;
  }
  EXPECT_THAT(requests.back().query.at("regid"), MatchesRegex(kGuid));
}

// expected.json of the sample says what is due, what each report has to hold, and which samples.
TEST_F(FullRun, JudgeFindsAllThatWasDue) {
  EXPECT_TRUE(isSound);
  EXPECT_EQ(Members(server->Body("rc2"), "submit_record").back(), "1") << "these come last";
}

// Statistics that were sent and a dump of more than 30 days are deleted, the settings hold the
// times; the two texts are the stand-ins' own.
TEST_F(FullRun, NoOtherFileChanges) {
  const std::string bin = "Program Files/Velmora/Corvane/bin/";
  EXPECT_THAT(Differences(filesBefore, filesAfter),
              ElementsAre(bin + "crashsentry.txt", bin + "tallyx.dat", bin + "tallyx1.dat",
                          bin + "tallyx2.dat", bin + "tallyx3.dat", bin + "tallyx4.dat",
                          bin + "tracelog.txt", bin + "vguard.exe.0352.dmp",
                          "ProgramData/Velmora/Corvane/settings/ostrell.json",
                          "ProgramData/Velmora/Corvane/tallyx5.dat"));
}

// What popblock_win.cpp writes first, newest first, each item and each other product once.
TEST_F(FullRun, PopupBlockLogAndStatistics) {
  EXPECT_EQ(
      CompactText(server->Body("rc5")),
      R"([{"product_name":"popblock","gname":"live","iname":"live 1"},{"product_name":"popblock"},)"
      R"({"product_name":"popblock","gname":"adverts","iname":"popup.example"},)"
      R"({"product_name":"popblock","gname":"adverts","iname":"banner.example","count":3},)"
      R"({"product_name":"deskhelper","gname":"tips","iname":"tip 12"},)"
      R"({"product_name":"softmanager","action":"disable","app":"Helper"},)"
      R"({"product_name":"popblock","gname":"trackers","iname":"banner.example"}])");
  EXPECT_THAT(server->Bodies("rc4"), ElementsAre(statistics.substr(16)));
  EXPECT_FALSE(std::filesystem::exists(product->DataFolder() / "tallyx5.dat"));
}

TEST_F(FullRun, UnifiedReport) {
  const JsonOwner body = server->Body("rc7");
  const auto types = Members(body, "report_type");
  const auto names = Members(body, "name");
  const auto patterns = Members(body, "pattern");
  const auto times = Members(body, "pe-time");
  const std::string linked = LinkTime(product->BinFolder() / "vguard.exe");
  std::vector<std::string> dumps;
  std::vector<std::string> others;
  for (size_t i = 0; i < types.size(); ++i) {
    (types[i] == "dmp_files" ? dumps : others).push_back(names[i] + " " + patterns[i] + times[i]);
  }
  EXPECT_THAT(dumps,
              UnorderedElementsAre("vguard.exe.2816.dmp " + linked, "vguard.exe.1408.dmp " + linked,
                                   "note.dmp ", "setup.5632.dmp "));
  EXPECT_THAT(
      others,
      ElementsAre("protsvc.log 0 failed1712345678", "protsvc.log 0 failed", "protsvc.log 0 failed",
                  "qxupdate.exe.log StartService:: 0x000000051760000000",
                  "qxupdate.exe.log StartService:: 0x00000005", "Application Error 1000",
                  "Application Error 1000", "Service Control Manager 7009",
                  "Service Control Manager 7000", "Service Control Manager 7009"));
  EXPECT_THAT(Members(body, "exe-time"), Contains("3302122928"));  // c4d265b0
  EXPECT_FALSE(std::filesystem::exists(product->BinFolder() / "vguard.exe.0352.dmp"));
  EXPECT_TRUE(std::filesystem::exists(product->BinFolder() / "vguard.exe.0704.dmp"));
  // Those beside the program are counted twice.
  EXPECT_THAT(product->Messages(),
              Contains("collect_dump_files Scan completed, found 7 dump files within time range"));
}

// One instant for all of them; that of the statistics is taken after the work.
TEST_F(FullRun, TimesLeaveTheSecondRunTheMachineInformation) {
  EXPECT_EQ(Sequence(*server), "rc1 rc2 rc5 rc3 rc4 rc7 rc1");
  EXPECT_THAT(before, Each(Lt(after[0])));
  EXPECT_THAT(after, Each(after[0]));
  EXPECT_GE(product->Time("rpttm_cc"), after[0]);
  EXPECT_EQ(product->SettingsText(), settings);
}

// A Windows that has no structured event log: there is nothing in the older one under Wine.
TEST(OldWindows, ReadsTheClassicEventLog) {
  const SampleProduct product;
  const AgentServer server;
  const std::string key = "HKCU\\\\Software\\\\Wine\\\\AppDefaults\\\\ostrell.exe";
  product.Registry("add " + key + " /v Version /d winxp64 /f");
  EXPECT_EQ(RunAgent().exitCode, 0);
  product.Registry("delete " + key + " /f");
  const auto types = Members(server.Body("rc7"), "report_type");
  EXPECT_EQ(types.size(), 9u);
  EXPECT_THAT(types, Not(Contains("syslog")));
  EXPECT_THAT(product.Messages(), Contains("collect_event_logs No events to collect, return NULL"));
}

}  // namespace
}  // namespace ostrell
