#include "unified/unified_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/calendar.h"
#include "tests/support/fake_run.h"

namespace ostrell {
namespace {

using testing::HasSubstr;

// An id that no product has.
struct OddCustomer : DefaultClientIdProvider {
  using DefaultClientIdProvider::DefaultClientIdProvider;
  uint32_t CustomerId() override { return 0xFFFFFFFF; }
};

TEST(CommonFields, ReplaceMembersOfEveryObject) {
  FakeRun fake;
  fake.svclink.versions["C:\\Corvane\\data\\sigdb\\mal.db"] = 20261101003;
  fake.facts.kernel->revision = 4294967295;
  const auto run = fake.Get();
  OddCustomer provider(run);
  const JsonOwner array(
      json_loads(R"([{"report_type":"syslog","r":"old","timestamp":5},7,[1],{}])", 0, nullptr));
  add_common_fields_to_unified_array(run, array.Get(), provider, -3);
  const std::string machine = R"("u":")" + fake.machineIdentity + R"(","c":-1,"v":"6.0.3.27",)";
  const std::string system =
      R"("d":20261101003,"s":19,"x":1,"ma":10,"mi":0,"bu":26100,"re":4294967295)";
  EXPECT_EQ(CompactText(array), R"([{"report_type":"syslog","r":-3,"timestamp":5,)" + machine +
                                    system + "},7,[1],{" + machine + system + R"(,"r":-3}])");
  EXPECT_EQ(fake.messages.back(),
            "add_common_fields_to_unified_array Added common fields to all 4 items");

  fake.messages.clear();
  const JsonOwner empty(json_array());
  add_common_fields_to_unified_array(run, empty.Get(), provider, 1);
  EXPECT_THAT(fake.messages, testing::IsEmpty());
}

TEST(CommonFields, WhatCannotBeTold) {
  FakeRun fake;
  fake.policydb.documents[25] = R"({"id": 4711})";
  fake.facts.system = std::nullopt;
  fake.facts.machine = 0xAA64;
  fake.facts.kernel = std::nullopt;
  fake.files.entries[L"C:\\Corvane\\VERSION"].content = "no version";
  const auto run = fake.Get();
  DefaultClientIdProvider provider(run);
  const JsonOwner array(json_loads("[{}]", 0, nullptr));
  add_common_fields_to_unified_array(run, array.Get(), provider, 0);
  EXPECT_EQ(CompactText(array),
            R"([{"u":")" + fake.machineIdentity +
                R"(","c":4711,"v":"","d":0,"s":0,"x":2,"ma":0,"mi":0,"bu":0,"re":0,"r":0}])");
}

TEST(ClientIdProvider, ReportLinkIsKeptOnceItWasAskedFor) {
  FakeRun fake;
  const auto run = fake.Get();
  EXPECT_EQ(DefaultClientIdProvider(run).ClientId(), fake.clientId);
  EXPECT_STREQ(DefaultClientIdProvider(run).ReportBaseUrl(), "https://127.0.0.1:1/v8");
  std::wstring& link = fake.registry.texts[FakeRegistry::Of(
      RegistryRoot::kMachine, L"SOFTWARE\\Velmora\\Corvane\\Ostrell", L"ReportLink")];
  DefaultClientIdProvider provider(run);
  for (const wchar_t* stored : {L"https://first.example/a", L"https://other.example"}) {
    link = stored;
    EXPECT_STREQ(provider.ReportBaseUrl(), "https://first.example/a");
  }
}

TEST(UnifiedReport, IsDueByTheTimeOfTheLastOne) {
  constexpr int64_t kNow = FakeRun::kNow;
  const struct {
    const char* what;
    int64_t age;  // of the last report in seconds
    uint32_t interval;
    bool isDue;
  } gates[] = {
      {"first run ever", kNow, 14400, true},   {"eight days ago", 691200, 14400, true},
      {"three days ago", 259200, 14400, true}, {"exactly one interval ago", 14400, 14400, true},
      {"a second less", 14399, 14400, false},  {"just now", 0, 14400, false},
      {"in the future", -5, 14400, false},     {"a longer interval", 86400, 86401, false},
      {"a shorter one", 60, 60, true},
  };
  for (const auto& gate : gates) {
    FakeRun fake;
    fake.registry.numbers[FakeRegistry::Of(
        RegistryRoot::kMachine, L"SOFTWARE\\Velmora\\Corvane\\Ostrell", L"MinReportInterval")] =
        gate.interval;
    fake.files.Beside(L"old.dmp").content = "x";  // of 1601
    const int64_t last = kNow - gate.age;
    fake.store.times["rpttm_localinfo"] = last;
    const auto run = fake.Get();
    DefaultClientIdProvider provider(run);
    EXPECT_FALSE(post_unified_report(run, provider)) << gate.what;
    const auto& messages = fake.messages;
    const std::string interval = std::to_string(gate.interval);
    ASSERT_GE(messages.size(), 4u) << gate.what;
    EXPECT_EQ(messages[0],
              "post_unified_report Unified report minimum interval: " + interval + " seconds");
    EXPECT_EQ(messages[1],
              "post_unified_report Start unified reporting: tm_now=1795565520, "
              "earliest_last_report=" +
                  std::to_string(last) +
                  ", tm_start=" + std::to_string(std::max(last, kNow - 604800)));
    EXPECT_THAT(messages[2], HasSubstr("Cleanup completed, deleted 1 old dump files")) << gate.what;
    EXPECT_EQ(messages.back(),
              gate.isDue
                  ? "post_unified_report No items to report in unified report, exit"
                  : "post_unified_report Time interval not exceeded (" + std::to_string(gate.age) +
                        " < " + interval + "), skip unified reporting")
        << gate.what;
    // No collector speaks when the report is not due.
    EXPECT_EQ(messages.size() > 4, gate.isDue) << gate.what;
    EXPECT_THAT(fake.store.written, testing::IsEmpty()) << gate.what;
  }
}

TEST(UnifiedReport, UploadThatFailsKeepsTheTime) {
  FakeRun fake;
  fake.files.Beside(L"new.dmp") = {.content = "x", .lastWrite = TicksFromSeconds(FakeRun::kNow)};
  const auto run = fake.Get();
  DefaultClientIdProvider provider(run);
  EXPECT_FALSE(post_unified_report(run, provider));
  EXPECT_EQ(fake.messages.back(),
            "post_unified_report Unified report completed: 1 items, result=0");
  EXPECT_THAT(fake.store.written, testing::IsEmpty());
}

}  // namespace
}  // namespace ostrell
