#include <gtest/gtest.h>

#include <array>

#include "env/client_identity.h"
#include "machine/system_facts.h"
#include "tests/support/private_registry_win.h"
#include "unified/client_id_provider.h"

namespace ostrell {
namespace {

TEST(ClientIdProviderTest, IdsAreTheProcessWideTexts) {
  DefaultClientIdProvider provider;
  EXPECT_EQ(provider.MachineId(), MachineIdentity().CStr());
  EXPECT_EQ(provider.ClientId(), ClientId().CStr());
}

TEST(ClientIdProviderTest, ReportLinkIsKeptForTheProcess) {
  const PrivateRegistry registry;
  DefaultClientIdProvider provider;
  for (const wchar_t* link : {L"https://first.example/a", L"https://other.example"}) {
    PrivateRegistry::SetText(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velmora\\Corvane\\Ostrell",
                             L"ReportLink", link);
    EXPECT_STREQ(provider.ReportBaseUrl(), "https://first.example/a");
  }
}

TEST(ClientIdProviderTest, SystemFieldsAreThoseOfTheMachine) {
  DefaultClientIdProvider provider;
  const auto system = QueryOperatingSystem();
  const auto kernel = ReadKernelVersion();
  ASSERT_TRUE(system && kernel);
  EXPECT_EQ(provider.SystemCode(1), system->family);
  EXPECT_EQ(provider.ProcessorClass(1), 1U);
  std::array<uint32_t, 4> parts{};
  EXPECT_TRUE(provider.KernelVersion(&parts[0], &parts[1], &parts[2], &parts[3]));
  EXPECT_EQ(parts, (std::array{kernel->major, kernel->minor, kernel->build, kernel->revision}));
}

}  // namespace
}  // namespace ostrell
