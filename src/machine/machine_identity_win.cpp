#include "machine/machine_identity_win.h"

#include <algorithm>
#include <array>

#include "base/hex.h"
#include "base/md5.h"
#include "machine/disk_identity_win.h"

namespace ostrell {
namespace {

struct IdentityRecord {
  uint8_t disk = 0;
  uint8_t diskFallback = 0;
  uint8_t adapter = 0;
  uint8_t adapterFallback = 0;
  Md5 md5;
};

std::string Encode(IdentityRecord& record) {
  const Md5::Digest digest = record.md5.Finish();
  const std::array status = {record.disk, record.diskFallback, record.adapter,
                             record.adapterFallback};
  return UpperHex(digest) + UpperHex(std::as_bytes(std::span(status)));
}

}  // namespace

// The order in which the digest is fed is the identity: it must not change.
std::string ComputeMachineIdentity(const HardwareApi& api) {
  IdentityRecord record;
  record.disk = FeedDiskByStorageQuery(api.devices, record.md5);
  if (record.disk != 0) {
    record.diskFallback = FeedDiskBySmart(api.devices, record.md5);
  }
  record.adapter = FeedPciAdapter(api.adapters, api.devices, record.md5);
  if (record.adapter != 0) {
    record.adapterFallback = FeedFirstAdapter(api.adapters, record.md5);
  }
  return Encode(record);
}

}  // namespace ostrell
