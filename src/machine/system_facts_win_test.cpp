#include "machine/system_facts_win.h"

#include <filesystem>
#include <sstream>
#include <string>

#include "base/print.h"
#include "tests/support/expect_recorded.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

// The words of a case are told in its file.
SystemApi SystemOf(const std::string& words) {
  OSVERSIONINFOEXW record{284, 0, 0, 9600, 2, L"", 0, 0, 0, 0, 0};
  SYSTEM_INFO system{};
  std::string rtl;
  std::string versionEx;
  uint32_t productType = 0;
  int serverR2 = 0;
  std::istringstream(words) >> record.dwMajorVersion >> record.dwMinorVersion >> productType >>
      rtl >> versionEx >> system.dwProcessorType >> system.wProcessorArchitecture >> serverR2;
  record.wProductType = static_cast<BYTE>(productType);
  SystemApi api;
  if (rtl != "missing") {
    api.rtlGetVersion = [=](OSVERSIONINFOEXW* version) {
      EXPECT_EQ(version->dwOSVersionInfoSize, 284U);
      *version = record;
      return rtl == "works" ? 0 : static_cast<LONG>(0xC0000001);
    };
  }
  api.getVersionEx = [=](OSVERSIONINFOW* version) {
    EXPECT_EQ(version->dwOSVersionInfoSize, 284U);
    *reinterpret_cast<OSVERSIONINFOEXW*>(version) = record;
    version->dwMinorVersion = 2;
    return versionEx == "works" ? TRUE : FALSE;
  };
  api.getNativeSystemInfo = [=](SYSTEM_INFO* info) { *info = system; };
  api.getSystemMetrics = [=](int index) { return index == SM_SERVERR2 ? serverR2 : 0; };
  return api;
}

TEST(SystemFactsWinTest, RecordedSystems) {
  ExpectRecorded("operating_system", [](const std::string& words, const RecordedCase&) {
    const WindowsFacts facts(SystemOf(words));
    const auto known = facts.QueryOperatingSystem();
    const char* const modern = facts.HasModernEventLog() ? " modern" : "";
    return known ? Print("%u %u%s%s", known->family, known->build,
                         known->x64Processor ? " x64" : "", modern)
                 : std::string("unknown") + modern;
  });
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

// Each in the same program file, whose library has none. Redirection is off for the reading.
TEST(SystemFactsWinTest, RecordedFileVersions) {
  const TestFolder folder;
  const std::filesystem::path path = folder.Path() / "x.dll";
  wchar_t library[MAX_PATH];
  GetModuleFileNameW(GetModuleHandleW(L"jansson.dll"), library, MAX_PATH);
  std::filesystem::copy_file(library, path);
  NotedRedirection redirection;
  SystemApi api;
  api.redirection = redirection.api;
  const WindowsFacts facts(api);
  EXPECT_EQ(facts.ReadFileVersion(path.c_str()), "");
  ExpectRecorded("file_version", [&](std::string resource, const RecordedCase&) {
    HANDLE update = BeginUpdateResourceW(path.c_str(), TRUE);
    EXPECT_TRUE(UpdateResourceW(update, RT_VERSION, MAKEINTRESOURCEW(1), 0, resource.data(),
                                static_cast<DWORD>(resource.size())));
    EXPECT_TRUE(EndUpdateResourceW(update, FALSE));
    redirection.calls.clear();
    std::string version = facts.ReadFileVersion(path.c_str());
    EXPECT_EQ(redirection.calls, "off on ");
    EXPECT_EQ(WindowsFacts().ReadFileVersion(path.c_str()), version);
    // Where it cannot be switched off, there is nothing to restore.
    redirection.works = FALSE;
    EXPECT_EQ(facts.ReadFileVersion(path.c_str()), version);
    EXPECT_EQ(redirection.calls, "off on off ");
    redirection.works = TRUE;
    return version;
  });
  redirection.calls.clear();
  EXPECT_EQ(facts.ReadFileVersion(L"C:\\no such folder\\x.exe"), "");
  EXPECT_EQ(redirection.calls, "off on ");
}

}  // namespace
}  // namespace ostrell
