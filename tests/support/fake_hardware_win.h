#pragma once

#include <winsock2.h>
#include <windows.h>

#include <gtest/gtest.h>
#include <iphlpapi.h>
#include <winioctl.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "base/bytes.h"
#include "base/hex.h"
#include "machine/adapter_identity_win.h"
#include "machine/device_api_win.h"
#include "tests/support/private_registry_win.h"

namespace ostrell {

// For tests: devices that answer as told, and note what they were asked.
struct FakeDevices {
  using Opened = std::tuple<std::string, DWORD, DWORD, DWORD>;  // path, access, share, disposition
  using Asked = std::tuple<DWORD, std::string, DWORD>;          // code, input, size of the output

  std::map<DWORD, std::string> answers;  // by control code; a control without one is refused
  std::vector<DWORD> accesses = {0, GENERIC_READ | GENERIC_WRITE};  // that open at all
  DWORD surplus = 0;  // added to the count of bytes that each control reports
  std::vector<Opened> opened;
  std::vector<Asked> asked;

  DeviceApi Api() {
    DeviceApi api;
    api.getSystemDirectory = [](char* to, UINT) -> UINT {
      constexpr char kFolder[] = "Q:\\Windows\\system32";
      std::memcpy(to, kFolder, sizeof(kFolder));
      return sizeof(kFolder) - 1;
    };
    api.createFile = [this](const char* path, DWORD access, DWORD share, auto, DWORD disposition,
                            auto, auto) {
      opened.emplace_back(path, access, share, disposition);
      return std::ranges::count(accesses, access) != 0
                 ? CreateFileA("NUL", 0, 0, nullptr, OPEN_EXISTING, 0, nullptr)
                 : INVALID_HANDLE_VALUE;
    };
    api.control = [this](HANDLE, DWORD code, void* input, DWORD inputSize, void* output,
                         DWORD outputSize, DWORD* returned, auto) {
      asked.emplace_back(code, std::string(static_cast<char*>(input), inputSize), outputSize);
      if (!answers.contains(code)) {
        return FALSE;
      }
      const size_t size = answers[code].copy(static_cast<char*>(output), outputSize);
      *returned = static_cast<DWORD>(size) + surplus;
      return TRUE;
    };
    return api;
  }
};

// For tests: a list of network adapters.
struct FakeAdapters {
  struct Adapter {
    std::string name;
    std::string address;
    UINT addressLength;
  };
  std::vector<Adapter> adapters;
  ULONG firstResult = ERROR_BUFFER_OVERFLOW;
  ULONG secondResult = NO_ERROR;
  bool hasMemory = true;

  AdapterApi Api() {
    AdapterApi api;
    api.getAdaptersInfo = [this](IP_ADAPTER_INFO* list, ULONG* size) {
      *size = static_cast<ULONG>(adapters.size() * sizeof(IP_ADAPTER_INFO));
      if (list == nullptr) {
        return firstResult;
      }
      // Every byte that is not told is 0xEE, what lies behind a name as well.
      std::memset(list, 0xEE, *size);
      for (const Adapter& adapter : adapters) {
        list->Next = &adapter != &adapters.back() ? list + 1 : nullptr;
        std::memcpy(list->AdapterName, adapter.name.c_str(), adapter.name.size() + 1);
        std::memcpy(list->Address, adapter.address.data(), adapter.address.size());
        list++->AddressLength = adapter.addressLength;
      }
      return secondResult;
    };
    if (!hasMemory) {
      api.allocate = [](size_t) { return nullptr; };
    }
    return api;
  }
};

// A storage device descriptor with its header of 40 bytes and the two texts behind it.
inline std::string StorageDescriptor(std::string_view productId, std::string_view serialNumber) {
  std::string descriptor(40, '\0');
  descriptor[16] = 40;
  descriptor[24] = static_cast<char>(41 + productId.size());
  return descriptor.append(productId).append(1, '\0').append(serialNumber).append(1, '\0');
}

class HardwareTest : public testing::Test {
 protected:
  static void SetText(const std::wstring& key, const wchar_t* name, const std::wstring& text) {
    const std::wstring path = L"SYSTEM\\CurrentControlSet\\Control\\" + key;
    PrivateRegistry::SetText(HKEY_LOCAL_MACHINE, path.c_str(), name, text);
  }
  static void Connect(const std::wstring& adapter, const std::wstring& device) {
    SetText(L"Network\\{4d36e972-e325-11ce-bfc1-08002be10318}\\" + adapter + L"\\Connection",
            L"PnpInstanceID", device);
  }
  static void AddDriver(const std::wstring& number, const std::wstring& adapter,
                        const std::wstring& device) {
    const std::wstring key = L"Class\\{4d36e972-e325-11ce-bfc1-08002be10318}\\" + number;
    SetText(key, L"NetCfgInstanceId", adapter);
    SetText(key, L"MatchingDeviceId", device);
  }

  // A driver that answers the identify command: 16 bytes of status, then 256 words.
  void AddSmart(char disk, char deviceMap, std::string_view swappedSerial,
                std::string_view swappedModel) {
    devices.answers[IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS] = std::string(32, '\0');
    devices.answers[IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS][8] = disk;
    devices.answers[SMART_GET_VERSION] = std::string(24, '\0');
    devices.answers[SMART_GET_VERSION][3] = deviceMap;
    devices.answers[SMART_RCV_DRIVE_DATA] =
        std::string(529, '\0')
            .replace(16 + 2 * 10, swappedSerial.size(), swappedSerial)
            .replace(16 + 2 * 27, swappedModel.size(), swappedModel);
  }

  void ExpectFed(std::string_view text) {
    EXPECT_EQ(UpperHex(md5.Finish()), UpperHex(Md5::Of(BytesOf(text)))) << text;
  }

  PrivateRegistry registry;
  FakeDevices devices;
  FakeAdapters adapters;
  Md5 md5;
};

}  // namespace ostrell
