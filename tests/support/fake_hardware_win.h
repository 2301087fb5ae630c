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

  // Answers by control code; a control without one is refused.
  std::map<DWORD, std::string> answers;
  // Which accesses open at all.
  std::vector<DWORD> accesses = {0, GENERIC_READ | GENERIC_WRITE};
  // Added to the count of bytes that each control reports.
  DWORD surplus = 0;

  std::vector<Opened> opened;
  std::vector<Asked> asked;

  DeviceApi Api() {
    return {.getSystemDirectory =
                [](char* to, UINT) {
                  constexpr std::string_view kFolder = "Q:\\Windows\\system32";
                  std::memcpy(to, kFolder.data(), kFolder.size() + 1);
                  return static_cast<UINT>(kFolder.size());
                },
            .createFile =
                [this](const char* path, DWORD access, DWORD share, auto, DWORD disposition, auto,
                       auto) {
                  opened.emplace_back(path, access, share, disposition);
                  return std::count(accesses.begin(), accesses.end(), access) != 0
                             ? CreateFileA("NUL", 0, 0, nullptr, OPEN_EXISTING, 0, nullptr)
                             : INVALID_HANDLE_VALUE;
                },
            .control =
                [this](HANDLE, DWORD code, void* input, DWORD inputSize, void* output,
                       DWORD outputSize, DWORD* returned, auto) {
                  asked.emplace_back(code, std::string(static_cast<char*>(input), inputSize),
                                     outputSize);
                  const auto answer = answers.find(code);
                  if (answer == answers.end()) {
                    return FALSE;
                  }
                  const size_t size = answer->second.copy(static_cast<char*>(output), outputSize);
                  *returned = static_cast<DWORD>(size) + surplus;
                  return TRUE;
                }};
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
      if (list == nullptr) {
        *size = static_cast<ULONG>(adapters.size() * sizeof(IP_ADAPTER_INFO));
        return firstResult;
      }
      Fill(list);
      return secondResult;
    };
    if (!hasMemory) {
      api.allocate = [](size_t) { return nullptr; };
    }
    return api;
  }

 private:
  // Every byte that is not told is 0xEE, what lies behind a name as well.
  void Fill(IP_ADAPTER_INFO* list) const {
    for (size_t i = 0; i < adapters.size(); ++i) {
      std::memset(&list[i], 0xEE, sizeof(list[i]));
      list[i].Next = i + 1 < adapters.size() ? &list[i + 1] : nullptr;
      std::memcpy(list[i].AdapterName, adapters[i].name.c_str(), adapters[i].name.size() + 1);
      std::memcpy(list[i].Address, adapters[i].address.data(), adapters[i].address.size());
      list[i].AddressLength = adapters[i].addressLength;
    }
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
  static void Connect(const std::wstring& adapter, const std::wstring& device) {
    PrivateRegistry::SetText(HKEY_LOCAL_MACHINE,
                             (L"SYSTEM\\CurrentControlSet\\Control\\Network\\"
                              L"{4d36e972-e325-11ce-bfc1-08002be10318}\\" +
                              adapter + L"\\Connection")
                                 .c_str(),
                             L"PnpInstanceID", device);
  }
  static void AddDriver(const std::wstring& key, const std::wstring& adapter,
                        const std::wstring& device) {
    const std::wstring path =
        L"SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e972-e325-11ce-bfc1-08002be10318}\\" +
        key;
    PrivateRegistry::SetText(HKEY_LOCAL_MACHINE, path.c_str(), L"NetCfgInstanceId", adapter);
    PrivateRegistry::SetText(HKEY_LOCAL_MACHINE, path.c_str(), L"MatchingDeviceId", device);
  }

  // A driver that answers the identify command: 16 bytes of status, then 256 words.
  void AddSmart(char disk, char deviceMap, std::string_view swappedSerial,
                std::string_view swappedModel) {
    std::string answer(529, '\0');
    answer.replace(16 + 2 * 10, swappedSerial.size(), swappedSerial);
    answer.replace(16 + 2 * 27, swappedModel.size(), swappedModel);
    std::string extents(32, '\0');
    extents[8] = disk;
    std::string version(24, '\0');
    version[3] = deviceMap;
    devices.answers[IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS] = extents;
    devices.answers[SMART_GET_VERSION] = version;
    devices.answers[SMART_RCV_DRIVE_DATA] = answer;
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
