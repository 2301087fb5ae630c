#include "unified/client_id_provider.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/support/fake_run.h"

namespace ostrell {
namespace {

TEST(ClientIdProvider, AsksMachineAndProduct) {
  FakeRun fake;
  fake.policydb.documents[25] = R"({"id": 4711})";
  fake.svclink.versions["C:\\Corvane\\data\\sigdb\\mal.db"] = 20261101003;
  const auto run = fake.Get();
  DefaultClientIdProvider provider(run);
  EXPECT_EQ(provider.MachineId(), fake.machineIdentity);
  EXPECT_EQ(provider.ClientId(), fake.clientId);
  EXPECT_EQ(provider.CustomerId(), 4711u);
  EXPECT_EQ(provider.SystemCode(7), 19u);
  EXPECT_EQ(provider.ProcessorClass(7), 1u);
  EXPECT_STREQ(provider.ProductVersion(), "6.0.3.27");
  EXPECT_EQ(provider.SignatureVersion(), 20261101003u);
  std::array<uint32_t, 4> kernel{};
  EXPECT_TRUE(provider.KernelVersion(&kernel[0], &kernel[1], &kernel[2], &kernel[3]));
  EXPECT_EQ(kernel, (std::array{10u, 0u, 26100u, 4652u}));
}

TEST(ClientIdProvider, WhatCannotBeTold) {
  FakeRun fake;
  fake.facts.system = std::nullopt;
  fake.facts.machine = 0xAA64;
  fake.facts.kernel = std::nullopt;
  fake.files.entries[L"C:\\Corvane\\VERSION"].content = "no version";
  const auto run = fake.Get();
  DefaultClientIdProvider provider(run);
  EXPECT_EQ(provider.SystemCode(0), 0u);
  EXPECT_EQ(provider.ProcessorClass(0), 2u);
  EXPECT_STREQ(provider.ProductVersion(), "");
  std::array<uint32_t, 4> kernel = {1, 2, 3, 4};
  EXPECT_FALSE(provider.KernelVersion(&kernel[0], &kernel[1], &kernel[2], &kernel[3]));
  EXPECT_EQ(kernel, (std::array{1u, 2u, 3u, 4u}));
}

TEST(ClientIdProvider, ReportLinkIsKeptOnceItWasAskedFor) {
  FakeRun fake;
  const auto run = fake.Get();
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
