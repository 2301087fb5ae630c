#include "machine/system_facts_win.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "base/print.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

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
      *reinterpret_cast<OSVERSIONINFOEXW*>(version) = record;
      version->dwMinorVersion = 2;
      return versionExResult;
    };
    api.getNativeSystemInfo = [this](SYSTEM_INFO* info) { *info = system; };
    api.getSystemMetrics = [this](int index) { return index == SM_SERVERR2 ? serverR2 : 0; };
    system.wProcessorArchitecture = PROCESSOR_ARCHITECTURE_AMD64;
    system.dwProcessorType = PROCESSOR_AMD_X8664;
  }

  // "family build", with "x64" behind it for such a processor.
  std::string Query() const {
    const auto known = WindowsFacts(api).QueryOperatingSystem();
    return known ? Print("%u %u%s", known->family, known->build, known->x64Processor ? " x64" : "")
                 : "";
  }

  OSVERSIONINFOEXW record{284, 6, 3, 9600, 2, L"", 0, 0, 0, VER_NT_WORKSTATION, 0};
  LONG rtlResult = 0;
  BOOL versionExResult = FALSE;
  SYSTEM_INFO system{};
  int serverR2 = 0;
  SystemApi api;
};

TEST_F(OperatingSystemTest, GetVersionExStandsInForRtlGetVersion) {
  EXPECT_EQ(Query(), "15 9600 x64");
  record.wProductType = VER_NT_SERVER;
  EXPECT_EQ(Query(), "16 9600 x64");
  rtlResult = static_cast<LONG>(0xC0000001);
  EXPECT_EQ(Query(), "");
  versionExResult = TRUE;
  EXPECT_EQ(Query(), "14 9600 x64");
  api.rtlGetVersion = nullptr;
  EXPECT_EQ(Query(), "14 9600 x64");
}

TEST_F(OperatingSystemTest, ProcessorTypeAndArchitectureAreApart) {
  record.dwMajorVersion = 5;
  record.dwMinorVersion = 2;
  system.dwProcessorType = PROCESSOR_INTEL_PENTIUM;
  EXPECT_EQ(Query(), "6 9600");
  system.wProcessorArchitecture = PROCESSOR_ARCHITECTURE_INTEL;
  system.dwProcessorType = PROCESSOR_AMD_X8664;
  EXPECT_EQ(Query(), "7 9600 x64");
  serverR2 = 1;
  EXPECT_EQ(Query(), "8 9600 x64");
}

// The modern interface came with version 6.0; GetVersionEx has no say.
TEST_F(OperatingSystemTest, ModernEventLogIsToldByRtlGetVersion) {
  versionExResult = TRUE;
  for (const DWORD major : {5, 6, 10}) {
    record.dwMajorVersion = major;
    EXPECT_EQ(WindowsFacts(api).HasModernEventLog(), major >= 6) << major;
  }
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
  const auto kernel = facts.ReadKernelVersion();
  ASSERT_TRUE(kernel);
  wchar_t path[MAX_PATH];
  GetSystemDirectoryW(path, MAX_PATH);
  EXPECT_EQ(facts.ReadFileVersion((path + std::wstring(L"\\ntoskrnl.exe")).c_str()),
            Print("%u.%u.%u.%u", kernel->major, kernel->minor, kernel->build, kernel->revision));
}

// A version resource: block header, key, so many bytes of a VS_FIXEDFILEINFO.
std::string VersionResource(DWORD versionMs, DWORD versionLs, WORD valueLength = 52) {
  const DWORD fixed[13] = {0xFEEF04BD, 0x10000, versionMs, versionLs, 0x00090009};
  const WORD lengths[] = {static_cast<WORD>(40 + valueLength), valueLength, 0};
  std::string resource(reinterpret_cast<const char*>(lengths), 6);
  resource.append(reinterpret_cast<const char*>(L"VS_VERSION_INFO"), 32).append(2, '\0');
  return resource.append(reinterpret_cast<const char*>(fixed), valueLength);
}

// A program file whose version resource each test puts in.
class FileVersionTest : public testing::Test {
 protected:
  FileVersionTest() {
    wchar_t source[MAX_PATH];
    GetModuleFileNameW(GetModuleHandleW(L"jansson.dll"), source, MAX_PATH);
    std::filesystem::copy_file(source, path);
  }

  std::string Read() { return WindowsFacts(api).ReadFileVersion(path.c_str()); }
  std::string ReadWith(std::string resource) {
    HANDLE update = BeginUpdateResourceW(path.c_str(), TRUE);
    EXPECT_TRUE(UpdateResourceW(update, RT_VERSION, MAKEINTRESOURCEW(1), 0, resource.data(),
                                static_cast<DWORD>(resource.size())));
    EXPECT_TRUE(EndUpdateResourceW(update, FALSE));
    return Read();
  }

  const TestFolder folder;
  const std::filesystem::path path = folder.Path() / "x.dll";
  SystemApi api;
};

TEST_F(FileVersionTest, HasFourUnsignedPartsMostSignificantFirst) {
  EXPECT_EQ(Read(), "");  // no resource
  EXPECT_EQ(ReadWith(VersionResource(0x000A0000, 0x585D1234)), "10.0.22621.4660");
  EXPECT_EQ(WindowsFacts().ReadFileVersion(path.c_str()), "10.0.22621.4660");
  EXPECT_EQ(ReadWith(VersionResource(0xFFFF0001, 0x80000000)), "65535.1.32768.0");
  EXPECT_EQ(ReadWith(VersionResource(0x000A0000, 0x585D1234, 16)), "");  // cut
}

TEST_F(FileVersionTest, RedirectionIsOffForTheReading) {
  std::string calls;
  int old = 0;
  BOOL answer = TRUE;
  api.redirection.disable = [&](void** oldValue) {
    calls += "disable ";
    *oldValue = &old;
    return answer;
  };
  api.redirection.revert = [&](void* oldValue) {
    calls += oldValue == &old ? "revert " : "revert to something else ";
    return TRUE;
  };
  EXPECT_EQ(ReadWith(VersionResource(0x00010002, 0x00030004)), "1.2.3.4");
  EXPECT_EQ(WindowsFacts(api).ReadFileVersion(L"C:\\no such folder\\x.exe"), "");
  EXPECT_EQ(calls, "disable revert disable revert ");
  // Where it cannot be switched off, there is nothing to restore.
  calls.clear();
  answer = FALSE;
  EXPECT_EQ(Read(), "1.2.3.4");
  EXPECT_EQ(calls, "disable ");
}

}  // namespace
}  // namespace ostrell
