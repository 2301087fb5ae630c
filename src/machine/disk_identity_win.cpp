#include "machine/disk_identity_win.h"

#include <winioctl.h>

#include <array>
#include <cstring>
#include <vector>

#include "base/bounded_text.h"
#include "base/bytes.h"
#include "machine/descriptor_text.h"

namespace ostrell {
namespace {

constexpr size_t kDescriptorSize = 10000;
constexpr size_t kIdentifyAnswerSize = sizeof(SENDCMDOUTPARAMS) + IDENTIFY_BUFFER_SIZE;

static_assert(sizeof(STORAGE_PROPERTY_QUERY) == 12);
static_assert(sizeof(VOLUME_DISK_EXTENTS) == 32);
static_assert(sizeof(GETVERSIONINPARAMS) == 24);
static_assert(sizeof(SENDCMDINPARAMS) == 33);
static_assert(kIdentifyAnswerSize == 529);

FileHandle OpenSystemDrive(const DeviceApi& api, DWORD access, DWORD share) {
  std::array<char, MAX_PATH> directory{};
  api.getSystemDirectory(directory.data(), MAX_PATH);
  const auto path = BoundedText<char, 8>::Print("\\\\.\\%c:", directory[0]);
  return OpenDevice(api, path.CStr(), access, share);
}

template <class Structure>
std::span<std::byte> BytesOfStructure(Structure& structure) {
  return std::as_writable_bytes(std::span(&structure, 1));
}

SENDCMDINPARAMS IdentifyCommand(DWORD disk, BYTE deviceMap) {
  // The map has one bit a disk for packet devices, from bit 4 on.
  const bool isPacketDevice = disk < 8 && ((deviceMap >> disk) & 0x10) != 0;
  SENDCMDINPARAMS command{};
  command.cBufferSize = IDENTIFY_BUFFER_SIZE;
  command.irDriveRegs.bSectorCountReg = 1;
  command.irDriveRegs.bSectorNumberReg = 1;
  command.irDriveRegs.bDriveHeadReg = static_cast<BYTE>(0xA0 | (disk & 1) << 4);
  command.irDriveRegs.bCommandReg = isPacketDevice ? ATAPI_ID_CMD : ID_CMD;
  command.bDriveNumber = static_cast<BYTE>(disk);
  return command;
}

}  // namespace

uint8_t FeedDiskByStorageQuery(const DeviceApi& api, Md5& md5) {
  const FileHandle drive = OpenSystemDrive(api, 0, FILE_SHARE_READ | FILE_SHARE_WRITE);
  if (!drive) {
    return 1;
  }
  STORAGE_PROPERTY_QUERY query{};
  query.PropertyId = StorageDeviceProperty;
  query.QueryType = PropertyStandardQuery;
  std::vector<std::byte> output(kDescriptorSize);
  const auto descriptor =
      AskDevice(api, drive, IOCTL_STORAGE_QUERY_PROPERTY, BytesOfStructure(query), output);
  if (!descriptor) {
    return 2;
  }
  STORAGE_DEVICE_DESCRIPTOR header;
  std::memcpy(&header, output.data(), sizeof(header));
  md5.Update(BytesOf(DescriptorText(*descriptor, header.ProductIdOffset, false)));
  md5.Update(BytesOf(DescriptorText(*descriptor, header.SerialNumberOffset, true)));
  return 0;
}

uint8_t FeedDiskBySmart(const DeviceApi& api, Md5& md5) {
  const FileHandle drive = OpenSystemDrive(api, GENERIC_READ | GENERIC_WRITE,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
  VOLUME_DISK_EXTENTS extents{};
  if (!drive ||
      !AskDevice(api, drive, IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS, {}, BytesOfStructure(extents))) {
    return 1;
  }
  GETVERSIONINPARAMS version{};
  if (!AskDevice(api, drive, SMART_GET_VERSION, {}, BytesOfStructure(version))) {
    return 2;
  }
  auto command = IdentifyCommand(extents.Extents[0].DiskNumber, version.bIDEDeviceMap);
  std::array<std::byte, kIdentifyAnswerSize> answer{};
  if (!AskDevice(api, drive, SMART_RCV_DRIVE_DATA, BytesOfStructure(command), answer)) {
    return 3;
  }
  const auto identify = std::span(answer).subspan(offsetof(SENDCMDOUTPARAMS, bBuffer));
  md5.Update(BytesOf(IdentifyText(identify, 27, 20)));
  md5.Update(BytesOf(IdentifyText(identify, 10, 10)));
  return 0;
}

}  // namespace ostrell
