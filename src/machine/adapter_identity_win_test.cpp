#include "machine/adapter_identity_win.h"

#include <gtest/gtest.h>
#include <ntddndis.h>

#include <string>

#include "base/text.h"
#include "tests/support/fake_hardware_win.h"

namespace ostrell {
namespace {

// One adapter that passes both checks; its device does not open.
class AdapterIdentityTest : public HardwareTest {
 protected:
  AdapterIdentityTest() {
    adapters.adapters = {{"{A}", std::string("\x02\x11\x22\x33\x00\x02", 6), 6}};
    devices.accesses = {};
    Connect(L"{A}", L"PCI\\VEN_F0F0&DEV_0001\\4&1");
    AddDriver(L"0000", L"{A}", L"pci\\ven_f0f0&dev_0001");
  }

  uint8_t FeedPci() { return FeedPciAdapter(adapters.Api(), devices.Api(), md5); }
  uint8_t FeedFirst() { return FeedFirstAdapter(adapters.Api(), md5); }
};

TEST_F(AdapterIdentityTest, CurrentAddressStandsInWhereTheDriverDoesNotTellThePermanentOne) {
  EXPECT_EQ(FeedPci(), 0);  // the device does not open
  devices.accesses = {0};
  EXPECT_EQ(FeedPci(), 0);  // it opens, but refuses
  std::string& answer = devices.answers[IOCTL_NDIS_QUERY_GLOBAL_STATS];
  answer = "\x10\x20\x30\x40\x50\x60";
  EXPECT_EQ(FeedPci(), 0);
  answer = std::string(256, 'a');
  devices.surplus = 1;  // past the buffer
  EXPECT_EQ(FeedPci(), 0);
  ExpectFed(std::string("\x02\x11\x22\x33\x00\x02\x02\x11\x22\x33\x00\x02", 12) +
            "\x10\x20\x30\x40\x50\x60" + answer);
  EXPECT_EQ(
      devices.opened.back(),
      FakeDevices::Opened("\\\\.\\{A}", 0, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING));
  EXPECT_EQ(devices.asked.back(),
            FakeDevices::Asked(IOCTL_NDIS_QUERY_GLOBAL_STATS, "\x01\x01\x01\x01", 256));
}

TEST_F(AdapterIdentityTest, FirstAdapterThatPassesBothChecksIsTaken) {
  adapters.adapters = {{"{no keys}", "1", 1}, {"{B}", "22", 2}, {"{A}", "333", 3}, {"{C}", "4", 1}};
  Connect(L"{B}", L"pci\\1");
  AddDriver(L"0001", L"{B}", L"usb\\vid_f0f1");
  Connect(L"{C}", L"pci\\1");
  AddDriver(L"0002", L"{C}", L"pci\\1");
  EXPECT_EQ(FeedPci(), 0);
  ExpectFed("333");
}

TEST_F(AdapterIdentityTest, AdapterThatFailsOneCheckIsStatus5) {
  const wchar_t* const rows[][3] = {// instance, whose driver, its device
                                    {L"USB\\VID_F0F1", L"{A}", L"pci\\1"},
                                    {L"pci", L"{A}", L"pci\\1"},
                                    {L"", L"{A}", L"pci\\1"},
                                    {L"xpci\\1", L"{A}", L"pci\\1"},
                                    {L"pci\\1", L"{A}", L"usb\\pci\\1"},
                                    {L"pci\\1", L"{A}", L""},
                                    {L"pci\\1", L"{B}", L"pci\\1"},
                                    {L"pci\\1", L"{a}", L"pci\\1"}};
  for (const auto& [instance, driverOf, device] : rows) {
    Connect(L"{A}", instance);
    AddDriver(L"0000", driverOf, device);
    EXPECT_EQ(FeedPci(), 5) << Utf8FromWide(instance) << " " << Utf8FromWide(device);
  }
  ExpectFed("");
  EXPECT_TRUE(devices.opened.empty());
}

TEST_F(HardwareTest, AdapterWithoutKeysIsStatus5) {
  adapters.adapters = {{"{A}", "1", 1}};
  EXPECT_EQ(FeedPciAdapter(adapters.Api(), devices.Api(), md5), 5);
  Connect(L"{A}", L"pci\\1");  // there is no key of drivers
  EXPECT_EQ(FeedPciAdapter(adapters.Api(), devices.Api(), md5), 5);
}

TEST_F(AdapterIdentityTest, PrintsEachDriverKeyOfTheAdapter) {
  AddDriver(L"0000", L"{B}", L"pci\\other");
  AddDriver(L"0001", L"{A}", L"pci\\one");
  AddDriver(L"0002", L"{A}", L"usb\\two");
  testing::internal::CaptureStdout();
  EXPECT_EQ(FeedPci(), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "MatchingDeviceId: [pci\\one]\nMatchingDeviceId: [usb\\two]\n");
}

TEST_F(AdapterIdentityTest, ListThatCannotBeHadHasItsStatus) {
  const auto expect = [this](uint8_t status) {
    EXPECT_EQ(FeedPci(), status);
    EXPECT_EQ(FeedFirst(), status);
  };
  adapters.secondResult = ERROR_BUFFER_OVERFLOW;
  expect(4);
  adapters.hasMemory = false;
  expect(3);
  for (const ULONG result : {ERROR_NO_DATA, NO_ERROR}) {
    adapters.firstResult = result;
    expect(1);
  }
  ExpectFed("");
}

TEST_F(AdapterIdentityTest, FallbackFeedsTheHeadOfTheListWithinItsField) {
  adapters.adapters = {{"{B}", "12345678", 0}, {"{A}", "uvwxyz", 6}};
  for (const UINT length : {0U, 7U, 9U, 0xFFFFFFFFU}) {
    adapters.adapters[0].addressLength = length;
    EXPECT_EQ(FeedFirst(), 0);
  }
  ExpectFed("12345671234567812345678");
}

}  // namespace
}  // namespace ostrell
