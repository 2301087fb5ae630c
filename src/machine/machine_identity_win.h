#pragma once

#include <string>

#include "machine/adapter_identity_win.h"
#include "machine/device_api_win.h"

namespace ostrell {

// What the machine identity asks of the machine.
struct HardwareApi {
  DeviceApi devices;
  AdapterApi adapters;
};

// 40 upper-case hexadecimal characters: the MD5 of what the disk of the system directory and then a
// network adapter say of themselves, and four status bytes: disk, disk fallback, adapter, adapter
// fallback. A fallback is asked only when the status before it is not 0, and its own is 0
// otherwise.
std::string ComputeMachineIdentity(const HardwareApi& api);

}  // namespace ostrell
