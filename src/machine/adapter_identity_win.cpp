#include "machine/adapter_identity_win.h"

#include <ntddndis.h>
#include <winioctl.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "base/print.h"
#include "base/registry_win.h"
#include "base/text.h"

namespace ostrell {
namespace {

constexpr wchar_t kConnectionKey[] =
    L"SYSTEM\\CurrentControlSet\\Control\\Network\\{4d36e972-e325-11ce-bfc1-08002be10318}\\%s"
    L"\\Connection";
constexpr wchar_t kDriversKey[] =
    L"SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e972-e325-11ce-bfc1-08002be10318}";
constexpr DWORD kIdentifierBytes = 1024;  // device identifiers have at most 200 characters
constexpr size_t kKeyNameSize = 256;

// The list stands in `block`, as GetAdaptersInfo filled it.
struct AdapterList {
  uint8_t status;
  std::unique_ptr<std::byte[]> block;

  const IP_ADAPTER_INFO* Head() const {
    return reinterpret_cast<const IP_ADAPTER_INFO*>(block.get());
  }
};

AdapterList ListAdapters(const AdapterApi& api) {
  ULONG size = 0;
  if (api.getAdaptersInfo(nullptr, &size) != ERROR_BUFFER_OVERFLOW) {
    return {1, nullptr};
  }
  auto block = api.allocate(size);
  if (block == nullptr) {
    return {3, nullptr};
  }
  if (api.getAdaptersInfo(reinterpret_cast<IP_ADAPTER_INFO*>(block.get()), &size) != NO_ERROR) {
    return {4, nullptr};
  }
  return {0, std::move(block)};
}

std::string_view NameOf(const IP_ADAPTER_INFO& adapter) {
  const std::string_view field(adapter.AdapterName, sizeof(adapter.AdapterName));
  return field.substr(0, field.find('\0'));
}

std::span<const std::byte> AddressOf(const IP_ADAPTER_INFO& adapter) {
  const std::span<const BYTE> field(adapter.Address);
  return std::as_bytes(field.first(std::min<size_t>(adapter.AddressLength, field.size())));
}

bool IsPciDevice(const std::wstring& identifier) {
  return StartsWithIgnoringCase(Utf8FromWide(identifier), "pci\\");
}

std::wstring ReadIdentifier(HKEY root, const wchar_t* subkey, const wchar_t* name) {
  return ReadRegistryText(root, subkey, name, kIdentifierBytes).value_or(L"");
}

bool HasPciConnection(const std::wstring& adapterName) {
  const std::wstring key = Print(kConnectionKey, adapterName);
  return IsPciDevice(ReadIdentifier(HKEY_LOCAL_MACHINE, key.c_str(), L"PnpInstanceID"));
}

bool HasPciDriver(const std::wstring& adapterName) {
  RegistryKey drivers;
  if (OpenRegistryKey(HKEY_LOCAL_MACHINE, kDriversKey, KEY_READ, drivers) != ERROR_SUCCESS) {
    return false;
  }
  std::array<wchar_t, kKeyNameSize> subkey;
  bool found = false;
  for (DWORD index = 0;; ++index) {
    DWORD length = kKeyNameSize;
    if (RegEnumKeyExW(drivers.Get(), index, subkey.data(), &length, nullptr, nullptr, nullptr,
                      nullptr) != ERROR_SUCCESS) {
      return found;
    }
    if (ReadIdentifier(drivers.Get(), subkey.data(), L"NetCfgInstanceId") == adapterName) {
      const auto device = ReadIdentifier(drivers.Get(), subkey.data(), L"MatchingDeviceId");
      std::fputs(Print("MatchingDeviceId: [%s]\n", Utf8FromWide(device)).c_str(), stdout);
      found = found || IsPciDevice(device);
    }
  }
}

bool IsPciAdapter(const IP_ADAPTER_INFO& adapter) {
  const std::string_view name = NameOf(adapter);  // a GUID in braces, ASCII
  const std::wstring wideName(name.begin(), name.end());
  return HasPciConnection(wideName) && HasPciDriver(wideName);
}

void FeedAddress(const IP_ADAPTER_INFO& adapter, const DeviceApi& devices, Md5& md5) {
  const std::string path = "\\\\.\\" + std::string(NameOf(adapter));
  const FileHandle device =
      OpenDevice(devices, path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE);
  const DWORD object = OID_802_3_PERMANENT_ADDRESS;
  std::array<std::byte, 256> output{};
  std::optional<std::span<const std::byte>> permanent;
  if (device) {
    permanent = AskDevice(devices, device, IOCTL_NDIS_QUERY_GLOBAL_STATS,
                          std::as_bytes(std::span(&object, 1)), output);
  }
  md5.Update(permanent.value_or(AddressOf(adapter)));
}

}  // namespace

uint8_t FeedPciAdapter(const AdapterApi& api, const DeviceApi& devices, Md5& md5) {
  const AdapterList list = ListAdapters(api);
  if (list.status != 0) {
    return list.status;
  }
  for (const IP_ADAPTER_INFO* adapter = list.Head(); adapter != nullptr; adapter = adapter->Next) {
    if (IsPciAdapter(*adapter)) {
      FeedAddress(*adapter, devices, md5);
      return 0;
    }
  }
  return 5;
}

uint8_t FeedFirstAdapter(const AdapterApi& api, Md5& md5) {
  const AdapterList list = ListAdapters(api);
  if (list.status == 0) {
    md5.Update(AddressOf(*list.Head()));
  }
  return list.status;
}

}  // namespace ostrell
