#include "machine/system_facts_win.h"

#include <gmock/gmock.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace ostrell {
namespace {

using testing::ElementsAre;

// A workstation of version 6.3 and a processor of type 8664, of which each test changes a part.
class OperatingSystemTest : public testing::Test {
 protected:
  OperatingSystemTest() {
    api.rtlGetVersion = [this](OSVERSIONINFOEXW* version) {
      EXPECT_EQ(version->dwOSVersionInfoSize, 284U);
      *version = record;
      return rtlResult;
    };
    api.getVersionEx = [this](OSVERSIONINFOW* version) {
      EXPECT_EQ(version->dwOSVersionInfoSize, 284U);
      auto* filled = reinterpret_cast<OSVERSIONINFOEXW*>(version);
      *filled = record;
      filled->dwMinorVersion = 2;
      return versionExResult;
    };
    api.getNativeSystemInfo = [this](SYSTEM_INFO* info) {
      info->wProcessorArchitecture = architecture;
      info->dwProcessorType = processorType;
    };
    api.getSystemMetrics = [this](int index) { return index == SM_SERVERR2 ? serverR2 : 0; };
  }

  std::optional<OperatingSystem> Query() const { return WindowsFacts(api).QueryOperatingSystem(); }
  uint32_t Family() const { return Query().value().family; }

  OSVERSIONINFOEXW record{284, 6, 3, 9600, 2, L"", 0, 0, 0, VER_NT_WORKSTATION, 0};
  LONG rtlResult = 0;
  BOOL versionExResult = TRUE;
  WORD architecture = PROCESSOR_ARCHITECTURE_AMD64;
  DWORD processorType = PROCESSOR_AMD_X8664;
  int serverR2 = 0;
  SystemApi api;
};

TEST_F(OperatingSystemTest, RtlGetVersionIsAskedFirst) {
  versionExResult = FALSE;
  const auto system = Query();
  ASSERT_TRUE(system);
  EXPECT_EQ(system->family, 15U);
  EXPECT_EQ(system->build, 9600U);
  EXPECT_TRUE(system->x64Processor);
  record.wProductType = VER_NT_SERVER;
  EXPECT_EQ(Family(), 16U);
}

TEST_F(OperatingSystemTest, GetVersionExStandsIn) {
  rtlResult = static_cast<LONG>(0xC0000001);
  EXPECT_EQ(Family(), 13U);
  versionExResult = FALSE;
  EXPECT_FALSE(Query());
  api.rtlGetVersion = nullptr;
  EXPECT_FALSE(Query());
  versionExResult = TRUE;
  EXPECT_EQ(Family(), 13U);
}

TEST_F(OperatingSystemTest, ProcessorTypeAndArchitectureAreApart) {
  record.dwMajorVersion = 5;
  record.dwMinorVersion = 2;
  processorType = PROCESSOR_INTEL_PENTIUM;
  EXPECT_EQ(Family(), 6U);
  EXPECT_FALSE(Query()->x64Processor);
  architecture = PROCESSOR_ARCHITECTURE_INTEL;
  processorType = PROCESSOR_AMD_X8664;
  EXPECT_EQ(Family(), 7U);
  EXPECT_TRUE(Query()->x64Processor);
  serverR2 = 1;
  EXPECT_EQ(Family(), 8U);
}

// The modern interface came with version 6.0; GetVersionEx has no say.
TEST_F(OperatingSystemTest, ModernEventLogIsToldByRtlGetVersion) {
  EXPECT_TRUE(WindowsFacts(api).HasModernEventLog());
  record.dwMajorVersion = 5;
  EXPECT_FALSE(WindowsFacts(api).HasModernEventLog());
  record.dwMajorVersion = 10;
  EXPECT_TRUE(WindowsFacts(api).HasModernEventLog());
  rtlResult = -1;
  EXPECT_FALSE(WindowsFacts(api).HasModernEventLog());
  api.rtlGetVersion = nullptr;
  EXPECT_FALSE(WindowsFacts(api).HasModernEventLog());
}

TEST(SystemFactsWinTest, NativeMachineIsTheSecondAnswer) {
  SystemApi api;
  EXPECT_EQ(WindowsFacts(api).NativeMachine(), 0);
  api.isWow64Process2 = [](HANDLE, USHORT* process, USHORT* native) {
    *process = 0x14C;
    *native = 0xAA64;
    return TRUE;
  };
  EXPECT_EQ(WindowsFacts(api).NativeMachine(), 0xAA64);
  api.isWow64Process2 = [](HANDLE, auto, auto) { return FALSE; };
  EXPECT_EQ(WindowsFacts(api).NativeMachine(), 0);
}

TEST(SystemFactsWinTest, TheRunningSystemAnswers) {
  const WindowsFacts facts;
  const auto system = facts.QueryOperatingSystem();
  ASSERT_TRUE(system);
  EXPECT_GE(system->family, 9U);
  EXPECT_NE(facts.NativeMachine(), 0);
  EXPECT_TRUE(facts.HasModernEventLog());
}

// A version resource: block header, key, VS_FIXEDFILEINFO of `valueLength` bytes.
std::vector<std::byte> VersionResource(DWORD versionMs, DWORD versionLs, WORD valueLength) {
  VS_FIXEDFILEINFO fixed{};
  fixed.dwSignature = 0xFEEF04BD;
  fixed.dwStrucVersion = 0x10000;
  fixed.dwFileVersionMS = versionMs;
  fixed.dwFileVersionLS = versionLs;
  fixed.dwProductVersionMS = 0x00090009;
  const auto length = static_cast<WORD>(40 + valueLength);
  std::vector<std::byte> resource(length);
  std::memcpy(resource.data(), &length, 2);
  std::memcpy(resource.data() + 2, &valueLength, 2);
  std::memcpy(resource.data() + 6, L"VS_VERSION_INFO", 32);
  std::memcpy(resource.data() + 40, &fixed, valueLength);
  return resource;
}

// A program file whose version resource each test puts in.
class FileVersionTest : public testing::Test {
 protected:
  void SetUp() override {
    std::array<wchar_t, MAX_PATH> source{};
    GetModuleFileNameW(GetModuleHandleW(L"jansson.dll"), source.data(), MAX_PATH);
    std::filesystem::copy_file(source.data(), path,
                               std::filesystem::copy_options::overwrite_existing);
  }
  void TearDown() override { std::filesystem::remove(path); }

  void Put(std::vector<std::byte> resource) {
    HANDLE update = BeginUpdateResourceW(path.c_str(), TRUE);
    EXPECT_TRUE(UpdateResourceW(update, RT_VERSION, MAKEINTRESOURCEW(1), 0, resource.data(),
                                static_cast<DWORD>(resource.size())));
    EXPECT_TRUE(EndUpdateResourceW(update, FALSE));
  }
  std::string Read() { return WindowsFacts(api).ReadFileVersion(path.c_str()); }

  const std::filesystem::path path =
      std::filesystem::temp_directory_path() /
      ("ostrell_version_" + std::to_string(GetCurrentProcessId()) + ".dll");
  SystemApi api;
};

TEST_F(FileVersionTest, HasFourUnsignedPartsMostSignificantFirst) {
  EXPECT_EQ(Read(), "");  // no resource
  Put(VersionResource(0x000A0000, 0x585D1234, sizeof(VS_FIXEDFILEINFO)));
  EXPECT_EQ(Read(), "10.0.22621.4660");
  EXPECT_EQ(WindowsFacts().ReadFileVersion(path.c_str()), "10.0.22621.4660");
  Put(VersionResource(0xFFFF0001, 0x80000000, sizeof(VS_FIXEDFILEINFO)));
  EXPECT_EQ(Read(), "65535.1.32768.0");
  Put(VersionResource(0x000A0000, 0x585D1234, 16));  // cut
  EXPECT_EQ(Read(), "");
}

TEST_F(FileVersionTest, RedirectionIsOffForTheReading) {
  std::vector<std::string> calls;
  int old = 0;
  BOOL answer = TRUE;
  api.redirection.disable = [&](void** oldValue) {
    calls.emplace_back("disable");
    *oldValue = &old;
    return answer;
  };
  api.redirection.revert = [&](void* oldValue) {
    calls.emplace_back(oldValue == &old ? "revert" : "revert to something else");
    return TRUE;
  };
  Put(VersionResource(0x00010002, 0x00030004, sizeof(VS_FIXEDFILEINFO)));
  EXPECT_EQ(Read(), "1.2.3.4");
  EXPECT_THAT(calls, ElementsAre("disable", "revert"));
  calls.clear();
  EXPECT_EQ(WindowsFacts(api).ReadFileVersion(L"C:\\no such folder\\x.exe"), "");
  EXPECT_THAT(calls, ElementsAre("disable", "revert"));
  // Where it cannot be switched off, there is nothing to restore.
  calls.clear();
  answer = FALSE;
  EXPECT_EQ(Read(), "1.2.3.4");
  EXPECT_THAT(calls, ElementsAre("disable"));
}

TEST(SystemFactsWinTest, KernelVersionIsThatOfItsFile) {
  std::array<wchar_t, MAX_PATH> directory{};
  GetSystemDirectoryW(directory.data(), MAX_PATH);
  const std::wstring path = std::wstring(directory.data()) + L"\\ntoskrnl.exe";
  const WindowsFacts facts;
  const auto kernel = facts.ReadKernelVersion();
  ASSERT_TRUE(kernel);
  EXPECT_EQ(std::to_string(kernel->major) + "." + std::to_string(kernel->minor) + "." +
                std::to_string(kernel->build) + "." + std::to_string(kernel->revision),
            facts.ReadFileVersion(path.c_str()));
}

}  // namespace
}  // namespace ostrell
