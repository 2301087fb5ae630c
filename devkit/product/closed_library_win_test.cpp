#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "base/owner.h"
#include "platform/closed_library.h"
#include "platform/crashsentry.h"
#include "platform/tracelog.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

using testing::ElementsAre;
using testing::Optional;

using Entry = void (*)();

struct ModuleTraits {
  using Handle = HMODULE;
  static Handle Empty() { return nullptr; }
  static void Close(Handle module) noexcept { FreeLibrary(module); }
};

std::filesystem::path BesideProgram(const char* name) {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  return std::filesystem::path(program).replace_filename(name);
}

std::vector<int> OrdinalsOf(const ClosedLibrary& library) {
  std::vector<int> found;
  for (uint16_t ordinal = 1; ordinal <= 100; ++ordinal) {
    if (library.ByOrdinal<Entry>(ordinal) != nullptr) {
      found.push_back(ordinal);
    }
  }
  return found;
}

TEST(ClosedLibraryTest, OnlyTheAgreedEntriesAreExported) {
  EXPECT_THAT(OrdinalsOf(ClosedLibrary(L"policydb.dll")), ElementsAre(9, 10, 13));
  EXPECT_THAT(OrdinalsOf(ClosedLibrary(L"svclink.dll")), ElementsAre(2, 10, 30));
  EXPECT_EQ(ClosedLibrary(L"tracelog.dll").ByName<Entry>("TraceLogRead"), nullptr);
}

// A library that the system's own search would find is not taken.
TEST(ClosedLibraryTest, OnlyTheProgramsFolderSupplies) {
  const TestFolder folder;
  std::filesystem::copy_file(BesideProgram("tracelog.dll"), folder.Path() / "elsewhere.dll");
  ASSERT_TRUE(SetDllDirectoryW(folder.Path().c_str()));
  const ClosedLibrary library(L"elsewhere.dll");
  EXPECT_EQ(library.ByName<Entry>("TraceLogWrite"), nullptr);
  EXPECT_EQ(library.ByOrdinal<Entry>(1), nullptr);
  const Owner<ModuleTraits> found(LoadLibraryW(L"elsewhere.dll"));
  EXPECT_TRUE(found) << "the search does not find it: the case shows nothing";
  SetDllDirectoryW(nullptr);
}

TEST(TraceLogTest, AppendsALineAMessage) {
  const std::filesystem::path log = BesideProgram("tracelog.txt");
  std::filesystem::remove(log);
  TraceLogger("post_unified_report", 42, 1)(L"Collected %u total items", 3U);
  // A reader does not keep the next message out.
  std::ifstream reader(log);
  ASSERT_TRUE(reader);
  TraceLogger("collect_dump_files", -1, 2)(L"%s\r\nsecond, skip",
                                           std::wstring(L"caf\u00e9 \U0001f600"));
  EXPECT_THAT(ContentOf(log),
              Optional(std::string(
                  "post_unified_report:42 1 Collected 3 total items\n"
                  "collect_dump_files:-1 2 caf\xc3\xa9 \xf0\x9f\x98\x80  second, skip\n")));
}

TEST(CrashSentryTest, IsInstalledWithZero) {
  const std::filesystem::path note = BesideProgram("crashsentry.txt");
  std::filesystem::remove(note);
  InstallCrashHandler();
  EXPECT_THAT(ContentOf(note), Optional(std::string("InstallCrashSentry(0)\n")));
}

}  // namespace
}  // namespace ostrell
