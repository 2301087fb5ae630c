#pragma once

#include <winsock2.h>
#include <windows.h>

#include <iphlpapi.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <new>

#include "base/md5.h"
#include "machine/device_api_win.h"

namespace ostrell {

// Where the list of network adapters comes from. Tests put their own in place.
struct AdapterApi {
  std::function<decltype(GetAdaptersInfo)> getAdaptersInfo = GetAdaptersInfo;
  // Null when there is no memory.
  std::function<std::unique_ptr<std::byte[]>(size_t)> allocate = [](size_t size) {
    return std::unique_ptr<std::byte[]>(new (std::nothrow) std::byte[size]);
  };
};

// A network adapter's physical address, fed to `md5`. Both return a status byte of the machine
// identity; when it is not 0, nothing was fed. 1: the system does not tell the size of its list,
// which is so too when there is no adapter. 3: no memory for the list. 4: no list.

// The permanent address of the first adapter that the registry names a PCI device, under its
// network connection as well as in its driver's key; its current address where the driver does not
// tell. 5: there is no such adapter. Prints a line to standard output for each driver key of an
// adapter that it looks at.
uint8_t FeedPciAdapter(const AdapterApi& api, const DeviceApi& devices, Md5& md5);

// The current address of the first adapter in the list.
uint8_t FeedFirstAdapter(const AdapterApi& api, Md5& md5);

}  // namespace ostrell
