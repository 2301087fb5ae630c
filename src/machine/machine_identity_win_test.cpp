#include "machine/machine_identity_win.h"

#include <winsock2.h>
#include <windows.h>

#include <iphlpapi.h>
#include <ntddndis.h>
#include <winioctl.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/hex.h"
#include "base/print.h"
#include "machine/disk_identity_win.h"
#include "tests/support/private_registry_win.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

// A machine as a recorded case tells it, by parts with "; " between them.
//   opens ACCESS...              how devices can be opened; hexadecimal, 0 and C0000000 if not told
//   CONTROL OFFSET BYTES         puts them into the answer, which grows with zeros; a control
//                                without an answer is refused
//   surplus NUMBER               what a device counts beyond the bytes of its answer
//   adapter NAME LENGTH ADDRESS  one more in the list
//   list FIRST SECOND            results of the calls that get it; 111 and 0 if not told
//   no-memory                    for the list
//   connection NAME DEVICE       what the registry says of an adapter
//   driver KEY NAME DEVICE       the same in the key of its driver
class FakeHardware {
 public:
  explicit FakeHardware(const std::string& machine) {
    std::istringstream parts(machine);
    for (std::string text; std::getline(parts >> std::ws, text, ';');) {
      std::istringstream part(text);
      std::string word;
      part >> word;
      if (kControls.contains(word)) {
        PutIntoAnswer(answers[kControls.at(word)], part);
      } else {
        Add(word, part);
      }
    }
  }

  HardwareApi Api() {
    HardwareApi api;
    api.devices.getSystemDirectory = [](char* to, UINT) -> UINT {
      constexpr char kFolder[] = "Q:\\Windows\\system32";
      std::memcpy(to, kFolder, sizeof(kFolder));
      return sizeof(kFolder) - 1;
    };
    api.devices.createFile = [this](const char* path, DWORD access, DWORD share, auto,
                                    DWORD disposition, auto, auto) {
      calls += Print("open %s %x %x %x\n", path, access, share, disposition);
      return std::ranges::count(accesses, access) != 0
                 ? CreateFileA("NUL", 0, 0, nullptr, OPEN_EXISTING, 0, nullptr)
                 : INVALID_HANDLE_VALUE;
    };
    api.devices.control = [this](HANDLE, DWORD code, void* input, DWORD inputSize, void* output,
                                 DWORD outputSize, DWORD* returned, auto) {
      const std::string asked(static_cast<char*>(input), inputSize);
      calls += Print("ask %x [%s] %u\n", code, UpperHex(BytesOf(asked)), outputSize);
      *returned = static_cast<DWORD>(answers[code].copy(static_cast<char*>(output), outputSize));
      *returned += surplus;
      return answers[code].empty() ? FALSE : TRUE;
    };
    api.adapters.getAdaptersInfo = [this](IP_ADAPTER_INFO* list, ULONG* size) {
      *size = static_cast<ULONG>(adapters.size() * sizeof(IP_ADAPTER_INFO));
      for (size_t i = 0; list != nullptr && i < adapters.size(); ++i) {
        list[i] = adapters[i];
        list[i].Next = i + 1 < adapters.size() ? list + i + 1 : nullptr;
      }
      return list == nullptr ? firstResult : secondResult;
    };
    if (!hasMemory) {
      api.adapters.allocate = [](size_t) { return nullptr; };
    }
    return api;
  }

  std::string calls;  // of devices, a line each

 private:
  static void PutIntoAnswer(std::string& answer, std::istream& part) {
    size_t offset = 0;
    part >> offset;
    const std::string bytes = Rest(part);
    answer.resize(std::max(answer.size(), offset + bytes.size()));
    answer.replace(offset, bytes.size(), bytes);
  }

  void Add(const std::string& word, std::istream& part) {
    std::string key;
    std::string name;
    if (word == "opens") {
      accesses.assign(std::istream_iterator<DWORD>(part >> std::hex), {});
    } else if (word == "surplus") {
      part >> surplus;
    } else if (word == "adapter") {
      UINT length = 0;
      part >> name >> length;
      AddAdapter(name, length, Rest(part));
    } else if (word == "list") {
      part >> firstResult >> secondResult;
    } else if (word == "no-memory") {
      hasMemory = false;
    } else if (word == "connection") {
      part >> name;
      SetText("Network", name + "\\Connection", L"PnpInstanceID", Rest(part));
    } else if (word == "driver") {
      part >> key >> name;
      SetText("Class", key, L"NetCfgInstanceId", name);
      SetText("Class", key, L"MatchingDeviceId", Rest(part));
    } else {
      ADD_FAILURE() << "unknown part of a machine: " << word;
    }
  }

  // All behind the blank that ends the words before it.
  static std::string Rest(std::istream& part) {
    part.get();
    return {std::istreambuf_iterator<char>(part), {}};
  }

  // Every byte that is not told is 0xEE, what lies behind a name as well.
  void AddAdapter(const std::string& name, UINT length, const std::string& address) {
    IP_ADAPTER_INFO& adapter = adapters.emplace_back();
    std::memset(&adapter, 0xEE, sizeof(adapter));
    std::memcpy(adapter.AdapterName, name.c_str(), name.size() + 1);
    std::memcpy(adapter.Address, address.data(), address.size());
    adapter.AddressLength = length;
  }

  static void SetText(const std::string& part, const std::string& key, const wchar_t* name,
                      const std::string& text) {
    const std::string path = "SYSTEM\\CurrentControlSet\\Control\\" + part +
                             "\\{4d36e972-e325-11ce-bfc1-08002be10318}\\" + key;
    PrivateRegistry::SetText(HKEY_LOCAL_MACHINE, std::wstring(path.begin(), path.end()).c_str(),
                             name, std::wstring(text.begin(), text.end()));
  }

  static inline const std::map<std::string, DWORD> kControls = {
      {"storage", IOCTL_STORAGE_QUERY_PROPERTY},
      {"extents", IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS},
      {"version", SMART_GET_VERSION},
      {"identify", SMART_RCV_DRIVE_DATA},
      {"address", IOCTL_NDIS_QUERY_GLOBAL_STATS}};

  PrivateRegistry registry;
  std::vector<DWORD> accesses = {0, GENERIC_READ | GENERIC_WRITE};
  std::map<DWORD, std::string> answers;
  DWORD surplus = 0;
  std::vector<IP_ADAPTER_INFO> adapters;
  ULONG firstResult = ERROR_BUFFER_OVERFLOW;
  ULONG secondResult = NO_ERROR;
  bool hasMemory = true;
};

// Status and digest of what was fed, or the identity.
std::string Ask(const std::string& what, const HardwareApi& api) {
  if (what == "identity") {
    return ComputeMachineIdentity(api);
  }
  Md5 md5;
  const int status = what == "storage" ? FeedDiskByStorageQuery(api.devices, md5)
                     : what == "smart" ? FeedDiskBySmart(api.devices, md5)
                     : what == "pci"   ? FeedPciAdapter(api.adapters, api.devices, md5)
                                       : FeedFirstAdapter(api.adapters, md5);
  return std::to_string(status) + " " + UpperHex(md5.Finish());
}

// A case gives the status and the text that is fed, if any, or the identity; `calls` are those of
// devices, and what is printed.
TEST(MachineIdentity, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("hardware")) {
    const std::string what = recorded["ask"];
    const auto calls = recorded.All("calls");
    for (size_t i = 0; const std::string& machine : recorded.All("machine")) {
      SCOPED_TRACE(recorded.Name() + ": " + machine);
      std::string expected = recorded.All("gives").at(i);
      if (what != "identity") {
        const std::string fed = expected.size() > 2 ? expected.substr(2) : "";
        expected = expected.substr(0, 1) + " " + UpperHex(Md5::Of(BytesOf(fed)));
      }
      FakeHardware hardware(machine);
      testing::internal::CaptureStdout();
      EXPECT_EQ(Ask(what, hardware.Api()), expected);
      const std::string noted = hardware.calls + testing::internal::GetCapturedStdout();
      if (!calls.empty()) {
        EXPECT_EQ(noted, calls.at(i) + (calls.at(i).empty() ? "" : "\n"));
      }
      ++i;
    }
  }
}

}  // namespace
}  // namespace ostrell
