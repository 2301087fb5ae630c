#pragma once

#include <cstdint>

#include "base/md5.h"
#include "machine/device_api_win.h"

namespace ostrell {

// What the disk of the system directory says of itself, fed to `md5`. Both return a status byte of
// the machine identity; when it is not 0, nothing was fed. What a device leaves out of its answer
// reads as zeros.

// Product id, then serial number of the storage device descriptor, cleaned as DescriptorText does;
// the serial number with swapped pairs. 1: the drive does not open. 2: the query fails.
uint8_t FeedDiskByStorageQuery(const DeviceApi& api, Md5& md5);

// Model, then serial number of the ATA identify data, which the driver reads by SMART. 1: the drive
// does not open or does not tell its disk's number. 2: no device map. 3: no identify data.
uint8_t FeedDiskBySmart(const DeviceApi& api, Md5& md5);

}  // namespace ostrell
