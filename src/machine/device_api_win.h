#pragma once

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <optional>
#include <span>

#include "base/handle_win.h"

namespace ostrell {

// What the hardware identity asks of devices. Tests put their own in place.
struct DeviceApi {
  std::function<decltype(GetSystemDirectoryA)> getSystemDirectory = GetSystemDirectoryA;
  std::function<decltype(CreateFileA)> createFile = CreateFileA;
  std::function<decltype(DeviceIoControl)> control = DeviceIoControl;
};

// Opens an existing device; empty on failure.
inline FileHandle OpenDevice(const DeviceApi& api, const char* path, DWORD access, DWORD share) {
  return FileHandle(api.createFile(path, access, share, nullptr, OPEN_EXISTING, 0, nullptr));
}

// Sends a control and returns the part of `output` that the device filled, whatever count it
// reports; nothing when it refuses.
inline std::optional<std::span<const std::byte>> AskDevice(const DeviceApi& api,
                                                           const FileHandle& device, DWORD code,
                                                           std::span<const std::byte> input,
                                                           std::span<std::byte> output) {
  DWORD returned = 0;
  if (!api.control(device.Get(), code, const_cast<std::byte*>(input.data()),
                   static_cast<DWORD>(input.size()), output.data(),
                   static_cast<DWORD>(output.size()), &returned, nullptr)) {
    return std::nullopt;
  }
  return output.first(std::min<size_t>(returned, output.size()));
}

}  // namespace ostrell
