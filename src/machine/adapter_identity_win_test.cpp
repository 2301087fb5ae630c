#include "machine/adapter_identity_win.h"

#include <gmock/gmock.h>
#include <ntddndis.h>

#include <string>

#include "base/text.h"
#include "tests/support/fake_hardware_win.h"

namespace ostrell {
namespace {

using testing::ElementsAre;

// One adapter that passes both checks; its device does not open.
class AdapterIdentityTest : public HardwareTest {
 protected:
  AdapterIdentityTest() {
    adapters.adapters = {{"{A}", std::string("\x02\x42\xAC\x11\x00\x02", 6), 6}};
    devices.accesses = {};
    Connect(L"{A}", L"PCI\\VEN_10EC&DEV_8168\\4&1");
    AddDriver(L"0000", L"{A}", L"pci\\ven_10ec&dev_8168");
  }

  uint8_t FeedPci() { return FeedPciAdapter(adapters.Api(), devices.Api(), md5); }
  uint8_t FeedFirst() { return FeedFirstAdapter(adapters.Api(), md5); }
};

TEST_F(AdapterIdentityTest, PermanentAddressOfAPciAdapterIsFed) {
  devices.accesses = {0};
  devices.answers[IOCTL_NDIS_QUERY_GLOBAL_STATS] = "\x10\x20\x30\x40\x50\x60";
  EXPECT_EQ(FeedPci(), 0);
  ExpectFed("\x10\x20\x30\x40\x50\x60");
  EXPECT_THAT(devices.opened,
              ElementsAre(FakeDevices::Opened{"\\\\.\\{A}", 0, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                              OPEN_EXISTING}));
  EXPECT_THAT(devices.asked, ElementsAre(FakeDevices::Asked{IOCTL_NDIS_QUERY_GLOBAL_STATS,
                                                            "\x01\x01\x01\x01", 256}));
}

TEST_F(AdapterIdentityTest, CurrentAddressStandsInWhereTheDriverDoesNotTell) {
  EXPECT_EQ(FeedPci(), 0);  // the device does not open
  devices.accesses = {0};
  EXPECT_EQ(FeedPci(), 0);  // it opens, but refuses
  ExpectFed({"\x02\x42\xAC\x11\x00\x02\x02\x42\xAC\x11\x00\x02", 12});
}

TEST_F(AdapterIdentityTest, AnswerPastItsBufferIsCutToIt) {
  devices.accesses = {0};
  devices.answers[IOCTL_NDIS_QUERY_GLOBAL_STATS] = std::string(256, 'a');
  devices.surplus = 1;
  EXPECT_EQ(FeedPci(), 0);
  ExpectFed(std::string(256, 'a'));
}

TEST_F(AdapterIdentityTest, FirstAdapterThatPassesBothChecksIsTaken) {
  adapters.adapters = {{"{no keys}", "1", 1}, {"{B}", "22", 2}, {"{A}", "333", 3}, {"{C}", "4", 1}};
  Connect(L"{B}", L"pci\\1");
  AddDriver(L"0001", L"{B}", L"usb\\vid_0bda");
  Connect(L"{C}", L"pci\\1");
  AddDriver(L"0002", L"{C}", L"pci\\1");
  EXPECT_EQ(FeedPci(), 0);
  ExpectFed("333");
}

TEST_F(AdapterIdentityTest, AdapterThatFailsOneCheckIsStatus5) {
  const struct {
    const wchar_t* instance;
    const wchar_t* driverOf;
    const wchar_t* device;
  } cases[] = {{L"USB\\VID_0BDA", L"{A}", L"pci\\1"},
               {L"pci", L"{A}", L"pci\\1"},
               {L"", L"{A}", L"pci\\1"},
               {L"xpci\\1", L"{A}", L"pci\\1"},
               {L"pci\\1", L"{A}", L"usb\\pci\\1"},
               {L"pci\\1", L"{A}", L""},
               {L"pci\\1", L"{B}", L"pci\\1"},
               {L"pci\\1", L"{a}", L"pci\\1"}};
  for (const auto& row : cases) {
    Connect(L"{A}", row.instance);
    AddDriver(L"0000", row.driverOf, row.device);
    EXPECT_EQ(FeedPci(), 5) << Utf8FromWide(row.instance) << " " << Utf8FromWide(row.device);
  }
  ExpectFed("");
  EXPECT_TRUE(devices.opened.empty());
}

using AdapterWithoutKeysTest = HardwareTest;

TEST_F(AdapterWithoutKeysTest, MissingKeysAreStatus5) {
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
  const struct {
    ULONG firstResult;
    ULONG secondResult;
    bool hasMemory;
    uint8_t status;
  } cases[] = {{NO_ERROR, NO_ERROR, true, 1},
               {ERROR_NO_DATA, NO_ERROR, true, 1},
               {ERROR_BUFFER_OVERFLOW, NO_ERROR, false, 3},
               {ERROR_BUFFER_OVERFLOW, ERROR_BUFFER_OVERFLOW, true, 4}};
  for (const auto& row : cases) {
    adapters.firstResult = row.firstResult;
    adapters.secondResult = row.secondResult;
    adapters.hasMemory = row.hasMemory;
    EXPECT_EQ(FeedPci(), row.status);
    EXPECT_EQ(FeedFirst(), row.status);
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
