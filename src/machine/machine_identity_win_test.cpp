#include "machine/machine_identity_win.h"

#include <ntddndis.h>

#include <string>

#include "tests/support/fake_hardware_win.h"

namespace ostrell {
namespace {

// A machine where everything works: storage query, PCI adapter, permanent address. The digests are
// those of the texts beside them, made with md5sum.
class MachineIdentityTest : public HardwareTest {
 protected:
  MachineIdentityTest() {
    devices.answers[IOCTL_STORAGE_QUERY_PROPERTY] = StorageDescriptor("Disk-X", "B1A2");
    devices.answers[IOCTL_NDIS_QUERY_GLOBAL_STATS] = "PERMAN";
    AddSmart(0, 0, "eSir", "oMed");
    adapters.adapters = {{"{A}", "CURREN", 6}};
    Connect(L"{A}", L"PCI\\1");
    AddDriver(L"0000", L"{A}", L"PCI\\1");
  }

  std::string Identity() { return ComputeMachineIdentity({devices.Api(), adapters.Api()}); }
};

TEST_F(MachineIdentityTest, FallbackIsNotAskedWhereTheFirstAnswerHolds) {
  EXPECT_EQ(Identity(), "5A3F7624107F93C5F6797ABD86AFA82900000000");  // "Disk-X1B2APERMAN"
  EXPECT_EQ(devices.asked.size(), 2U);
}

TEST_F(MachineIdentityTest, FallbackOfTheDiskIsFedBeforeTheAdapter) {
  devices.answers.erase(IOCTL_STORAGE_QUERY_PROPERTY);
  EXPECT_EQ(Identity(), "BD1E220A62F32D8F82B1747634B8CA0E02000000");  // "ModeSeriPERMAN"
}

TEST_F(MachineIdentityTest, WithoutAPciAdapterTheFirstOnesCurrentAddressIsFed) {
  Connect(L"{A}", L"USB\\1");
  EXPECT_EQ(Identity(), "93A35B124638240715DC9EDD166CD47E00000500");  // "Disk-X1B2ACURREN"
}

TEST_F(MachineIdentityTest, EachStatusHasItsByte) {
  devices.answers.erase(IOCTL_STORAGE_QUERY_PROPERTY);
  devices.answers.erase(SMART_RCV_DRIVE_DATA);
  adapters.secondResult = ERROR_INVALID_PARAMETER;
  EXPECT_EQ(Identity(), "D41D8CD98F00B204E9800998ECF8427E02030404");  // ""
  devices.accesses = {};
  adapters.hasMemory = false;
  EXPECT_EQ(Identity(), "D41D8CD98F00B204E9800998ECF8427E01010303");  // ""
}

}  // namespace
}  // namespace ostrell
