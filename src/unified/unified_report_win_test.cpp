#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/text.h"
#include "tests/support/fake_settings_store.h"
#include "tests/support/program_files_win.h"
#include "unified/unified_report.h"

namespace ostrell {
namespace {

using testing::Contains;
using testing::HasSubstr;

class FixedProvider final : public IClientIdProvider {
 public:
  const char* MachineId() override { return "MACHINE"; }
  const char* ClientId() override { return "{GUID}"; }
  uint32_t CustomerId() override { return 0xFFFFFFFF; }
  uint32_t SystemCode(int32_t) override { return 11; }
  uint32_t ProcessorClass(int32_t) override { return 2; }
  const char* ProductVersion() override { return "6.0.3.27"; }
  uint64_t SignatureVersion() override { return 20261101003; }
  bool KernelVersion(uint32_t* major, uint32_t* minor, uint32_t* build,
                     uint32_t* revision) override {
    *major = 10;
    *minor = 0;
    *build = 26100;
    *revision = 4294967295;
    return true;
  }
  const char* ReportBaseUrl() override { return "https://127.0.0.1:1/v8"; }  // refuses
};

TEST(CommonFields, ReplaceMembersOfEveryObject) {
  const ProgramFiles files;
  FixedProvider provider;
  const JsonOwner array(
      json_loads(R"([{"report_type":"syslog","r":"old","timestamp":5},7,[1],{}])", 0, nullptr));
  add_common_fields_to_unified_array(array.Get(), provider, -3);
  const std::string rest =
      R"("v":"6.0.3.27","d":20261101003,"s":11,"x":2,"ma":10,"mi":0,"bu":26100,"re":4294967295)";
  EXPECT_EQ(CompactText(array),
            R"([{"report_type":"syslog","r":-3,"timestamp":5,"u":"MACHINE","c":-1,)" + rest +
                R"(},7,[1],{"u":"MACHINE","c":-1,)" + rest + R"(,"r":-3}])");
  EXPECT_EQ(ProgramFiles::Messages().back(),
            "add_common_fields_to_unified_array Added common fields to all 4 items");

  const ProgramFiles fresh;
  const JsonOwner empty(json_array());
  add_common_fields_to_unified_array(empty.Get(), provider, 1);
  EXPECT_THAT(ProgramFiles::Messages(), testing::IsEmpty());
}

constexpr int64_t kNow = 1795565520;
constexpr int64_t kInterval = 14400;  // without a setting

struct Gate {
  const char* what;
  std::optional<int64_t> last;  // nothing: no such value
  int64_t start;
  bool isDue;
};

class UnifiedReportTest : public testing::Test {
 protected:
  UnifiedReportTest() {
    ProgramFiles::SetTime(files.Write(L"old.dmp", "x"), {0, 0x01000000});  // of 1829
  }
  static std::string StartMessage(int64_t last, int64_t start) {
    return "post_unified_report Start unified reporting: tm_now=" + std::to_string(kNow) +
           ", earliest_last_report=" + std::to_string(last) + ", tm_start=" + std::to_string(start);
  }

  ProgramFiles files;
  FixedProvider provider;
};

TEST_F(UnifiedReportTest, IsDueByTheTimeOfTheLastOne) {
  const int64_t weekAgo = kNow - 604800;
  const Gate gates[] = {
      {"first run ever", {}, weekAgo, true},
      {"eight days ago", kNow - 691200, weekAgo, true},
      {"three days ago", kNow - 259200, kNow - 259200, true},
      {"exactly one interval ago", kNow - kInterval, kNow - kInterval, true},
      {"a second less", kNow - kInterval + 1, kNow - kInterval + 1, false},
      {"just now", kNow, kNow, false},
      {"in the future", kNow + 5, kNow + 5, false},
  };
  for (const Gate& gate : gates) {
    const ProgramFiles fresh;
    files.Write(L"old.dmp", "x");
    ProgramFiles::SetTime(ProgramFiles::Folder() / "old.dmp", {0, 0x01000000});
    FakeSettingsStore store;
    if (gate.last) {
      store.times["rpttm_localinfo"] = *gate.last;
    }
    EXPECT_FALSE(post_unified_report(store.Hold(), kNow, provider)) << gate.what;
    const auto messages = ProgramFiles::Messages();
    ASSERT_GE(messages.size(), 4u) << gate.what;
    EXPECT_EQ(messages[0], "post_unified_report Unified report minimum interval: 14400 seconds");
    EXPECT_EQ(messages[1], StartMessage(gate.last.value_or(0), gate.start)) << gate.what;
    EXPECT_THAT(messages[2], HasSubstr("Cleanup completed, deleted 1 old dump files")) << gate.what;
    const int64_t gap = kNow - gate.last.value_or(0);
    EXPECT_EQ(messages.back(),
              gate.isDue ? "post_unified_report No items to report in unified report, exit"
                         : "post_unified_report Time interval not exceeded (" +
                               std::to_string(gap) + " < 14400), skip unified reporting")
        << gate.what;
    // No collector speaks when the report is not due.
    EXPECT_EQ(messages.size() > 4, gate.isDue) << gate.what;
    EXPECT_THAT(store.written, testing::IsEmpty()) << gate.what;
  }
}

TEST_F(UnifiedReportTest, UploadThatFailsKeepsTheTime) {
  files.Write(L"new.dmp", "x");
  FakeSettingsStore store;
  store.times["rpttm_localinfo"] = 5;
  EXPECT_FALSE(post_unified_report(store.Hold(), kNow, provider));
  const auto messages = ProgramFiles::Messages();
  EXPECT_THAT(messages,
              Contains("post_unified_report Collected 1 total items for unified reporting"));
  EXPECT_EQ(messages.back(), "post_unified_report Unified report completed: 1 items, result=0");
  EXPECT_THAT(store.written, testing::IsEmpty());
}

TEST_F(UnifiedReportTest, WithoutAStoreTheLastReportIsNever) {
  files.Write(L"new.dmp", "x");
  EXPECT_FALSE(post_unified_report(Settings(), kNow, provider));
  EXPECT_EQ(ProgramFiles::Messages()[1], StartMessage(0, kNow - 604800));
  EXPECT_EQ(ProgramFiles::Messages().back(),
            "post_unified_report Unified report completed: 1 items, result=0");
}

}  // namespace
}  // namespace ostrell
