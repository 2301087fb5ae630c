#include "env/client_identity_win.h"

#include <ntddndis.h>

#include <string>

#include "env/fake_hardware_win.h"

namespace ostrell {
namespace {

// A machine where everything works: storage query, PCI adapter, permanent address. The digests are
// those of the texts beside them, made with md5sum.
class ClientIdentityTest : public HardwareTest {
 protected:
  ClientIdentityTest() {
    devices.answers[IOCTL_STORAGE_QUERY_PROPERTY] = StorageDescriptor("Disk-X", "B1A2");
    devices.answers[IOCTL_NDIS_QUERY_GLOBAL_STATS] = "PERMAN";
    AddSmart(0, 0, "eSir", "oMed");
    adapters.adapters = {{"{A}", "CURREN", 6}};
    Connect(L"{A}", L"PCI\\1");
    AddDriver(L"0000", L"{A}", L"PCI\\1");
  }

  std::string Identity() {
    return std::string(ComputeMachineIdentity({devices.Api(), adapters.Api()}).View());
  }
};

TEST_F(ClientIdentityTest, FallbackIsNotAskedWhereTheFirstAnswerHolds) {
  EXPECT_EQ(Identity(), "5A3F7624107F93C5F6797ABD86AFA82900000000");  // "Disk-X1B2APERMAN"
  EXPECT_EQ(devices.asked.size(), 2U);
}

TEST_F(ClientIdentityTest, FallbackOfTheDiskIsFedBeforeTheAdapter) {
  devices.answers.erase(IOCTL_STORAGE_QUERY_PROPERTY);
  EXPECT_EQ(Identity(), "BD1E220A62F32D8F82B1747634B8CA0E02000000");  // "ModeSeriPERMAN"
}

TEST_F(ClientIdentityTest, WithoutAPciAdapterTheFirstOnesCurrentAddressIsFed) {
  Connect(L"{A}", L"USB\\1");
  EXPECT_EQ(Identity(), "93A35B124638240715DC9EDD166CD47E00000500");  // "Disk-X1B2ACURREN"
}

TEST_F(ClientIdentityTest, EachStatusHasItsByte) {
  devices.answers.erase(IOCTL_STORAGE_QUERY_PROPERTY);
  devices.answers.erase(SMART_RCV_DRIVE_DATA);
  adapters.secondResult = ERROR_INVALID_PARAMETER;
  EXPECT_EQ(Identity(), "D41D8CD98F00B204E9800998ECF8427E02030404");  // ""
  devices.accesses = {};
  adapters.hasMemory = false;
  EXPECT_EQ(Identity(), "D41D8CD98F00B204E9800998ECF8427E01010303");  // ""
}

TEST_F(ClientIdentityTest, ThisMachinesIdentityStays) {
  IdentityText machine("old");
  IdentityText client("old");
  EXPECT_EQ(ComputeIdentity(machine, client), 0);
  EXPECT_EQ(machine.View().size(), 40U);
  EXPECT_EQ(machine.View().find_first_not_of("0123456789ABCDEF"), std::string_view::npos);
  EXPECT_EQ(client.View().size(), 38U);
  IdentityText again;
  EXPECT_EQ(ComputeIdentity(again, client), 0);
  EXPECT_EQ(again.View(), machine.View());
}

TEST_F(ClientIdentityTest, ProcessWideTextsAreEmptyUntilFilled) {
  EXPECT_TRUE(MachineIdentity().IsEmpty());
  EXPECT_TRUE(ClientId().IsEmpty());
  EXPECT_NE(&MachineIdentity(), &ClientId());
}

}  // namespace
}  // namespace ostrell
