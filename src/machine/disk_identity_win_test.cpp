#include "machine/disk_identity_win.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/fake_hardware_win.h"

namespace ostrell {
namespace {

using namespace std::string_literals;

class DiskIdentityTest : public HardwareTest {
 protected:
  uint8_t FeedByStorageQuery() { return FeedDiskByStorageQuery(devices.Api(), md5); }
  uint8_t FeedBySmart() { return FeedDiskBySmart(devices.Api(), md5); }
};

TEST_F(DiskIdentityTest, StorageQueryFeedsProductIdThenSwappedSerialNumber) {
  devices.answers[IOCTL_STORAGE_QUERY_PROPERTY] = StorageDescriptor(" ZV-1000Q  ", "5A314233");
  EXPECT_EQ(FeedByStorageQuery(), 0);
  ExpectFed("ZV-1000Q1Z3B");
  EXPECT_EQ(devices.opened.at(0),
            FakeDevices::Opened("\\\\.\\Q:", 0, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING));
  EXPECT_EQ(devices.asked.at(0),
            FakeDevices::Asked(IOCTL_STORAGE_QUERY_PROPERTY, std::string(12, '\0'), 10000));
}

TEST_F(DiskIdentityTest, TextOutsideTheReturnedBytesIsNotRead) {
  std::string& answer = devices.answers[IOCTL_STORAGE_QUERY_PROPERTY];
  answer = StorageDescriptor("product", "serial").substr(0, 16);  // cut in its header
  EXPECT_EQ(FeedByStorageQuery(), 0);
  answer = StorageDescriptor("product", "serial");
  devices.surplus = DWORD{0} - 7;  // the count ends before the serial number
  EXPECT_EQ(FeedByStorageQuery(), 0);
  // Text up to the last byte of the buffer, without a terminator, and a count past it.
  answer.assign(10000, 'x').replace(16, 4, "\x0E\x27\0\0"s);  // 9998
  devices.surplus = 1000;
  EXPECT_EQ(FeedByStorageQuery(), 0);
  ExpectFed("productxx");
}

TEST_F(DiskIdentityTest, SmartFeedsModelThenSerialNumber) {
  AddSmart(0, 1, "    VQW-CC21        ", "VQ XVQ01ZAXB0- 0                        ");
  EXPECT_EQ(FeedBySmart(), 0);
  AddSmart(0, 1, std::string(20, 's'), std::string(40, 'm'));  // to the ends of the fields
  EXPECT_EQ(FeedBySmart(), 0);
  AddSmart(0, 1, "    VQW-", "eZlton07");
  devices.answers[SMART_RCV_DRIVE_DATA].resize(16 + 2 * 30);  // three words of the model
  EXPECT_EQ(FeedBySmart(), 0);
  ExpectFed("QVX QV10AZBX-00    QV-WCC12" + std::string(40, 'm') + std::string(20, 's') +
            "Zetlno    QV-W");
  EXPECT_EQ(
      devices.opened.at(0),
      FakeDevices::Opened("\\\\.\\Q:", GENERIC_READ | GENERIC_WRITE,
                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING));
  const std::string command = "\0\2\0\0\0\1\1\0\0\xA0\xEC\0"s + std::string(21, '\0');
  devices.asked.resize(3);
  EXPECT_EQ(devices.asked,
            (std::vector<FakeDevices::Asked>{{IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS, "", 32},
                                             {SMART_GET_VERSION, "", 24},
                                             {SMART_RCV_DRIVE_DATA, command, 529}}));
}

TEST_F(DiskIdentityTest, SmartCommandDependsOnDiskNumberAndDeviceMap) {
  const struct {
    uint8_t disk;
    uint8_t map;
    std::string_view headAndCommand;
  } cases[] = {{0, 0x0F, "\xA0\xEC"}, {0, 0x10, "\xA0\xA1"},  {1, 0x10, "\xB0\xEC"},
               {1, 0x20, "\xB0\xA1"}, {2, 0x40, "\xA0\xA1"},  {3, 0x80, "\xB0\xA1"},
               {4, 0xFF, "\xA0\xEC"}, {32, 0xFF, "\xA0\xEC"}, {255, 0xFF, "\xB0\xEC"}};
  for (const auto& row : cases) {
    AddSmart(static_cast<char>(row.disk), static_cast<char>(row.map), "", "");
    EXPECT_EQ(FeedBySmart(), 0);
    const std::string command = std::get<std::string>(devices.asked.back());
    EXPECT_EQ(command.substr(9, 2), row.headAndCommand) << int{row.disk};
    EXPECT_EQ(static_cast<uint8_t>(command[12]), row.disk);
  }
}

TEST_F(DiskIdentityTest, RefusalsHaveTheirStatus) {
  uint8_t status = 0;
  const DWORD codes[] = {IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS, SMART_GET_VERSION,
                         SMART_RCV_DRIVE_DATA};
  for (const DWORD code : codes) {
    AddSmart(0, 1, "se", "mo");
    devices.answers.erase(code);
    EXPECT_EQ(FeedBySmart(), ++status);
    EXPECT_EQ(std::get<0>(devices.asked.back()), code);
  }
  EXPECT_EQ(FeedByStorageQuery(), 2);
  devices.accesses = {};
  devices.asked.clear();
  EXPECT_EQ(FeedByStorageQuery(), 1);
  EXPECT_EQ(FeedBySmart(), 1);
  EXPECT_TRUE(devices.asked.empty());
  ExpectFed("");
}

}  // namespace
}  // namespace ostrell
