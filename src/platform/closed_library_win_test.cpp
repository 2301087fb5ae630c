#include <windows.h>

#include <gtest/gtest.h>

#include "base/owner.h"
#include "platform/closed_library.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

// A library that the system's own search would find is not taken. None lies beside this program.
TEST(ClosedLibrary, OnlyTheProgramsFolderSupplies) {
  const TestFolder folder;
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  std::filesystem::copy_file(std::filesystem::path(program).replace_filename("jansson.dll"),
                             folder.Path() / "tracelog.dll");
  ASSERT_TRUE(SetDllDirectoryW(folder.Path().c_str()));
  EXPECT_EQ(LoadTraceLog().write, nullptr);
  EXPECT_EQ(GetModuleHandleW(L"tracelog.dll"), nullptr);
  const ClosedBy<HMODULE, &FreeLibrary> found(LoadLibraryW(L"tracelog.dll"));
  EXPECT_TRUE(found) << "the search does not find it: the case shows nothing";
  SetDllDirectoryW(nullptr);
}

}  // namespace
}  // namespace ostrell
