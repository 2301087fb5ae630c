#include "unified/unified_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/fake_run.h"

// Whole reports are recorded cases of tests/jobs.

namespace ostrell {
namespace {

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

}  // namespace
}  // namespace ostrell
