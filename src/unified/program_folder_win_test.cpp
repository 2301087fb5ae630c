#include "unified/program_folder_win.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <winternl.h>

#include <array>

#include "platform/tracelog.h"
#include "tests/support/program_files_win.h"

namespace ostrell {
namespace {

// What the system gives back for a path that fits just so, for one that does not, and on failure.
TEST(ProgramFolder, CutPathIsNone) {
  const std::array<wchar_t, 5> buffer = {L'C', L':', L'\\', L'a', L'\0'};
  EXPECT_EQ(WholePath(buffer, 4), L"C:\\a");
  EXPECT_EQ(WholePath(buffer, 5), std::nullopt);
  EXPECT_EQ(WholePath(buffer, 6), std::nullopt);
  EXPECT_EQ(WholePath(buffer, 0), std::nullopt);
}

TEST(ProgramFolder, IsWhereTheProgramIs) {
  EXPECT_EQ(FindProgramFolder("operation", kCollectorFolderMessages),
            ProgramFiles::Folder().wstring());
}

// Lets the system give another path for the running program. The logging library, which is looked
// for beside it, has to be loaded by then.
class ProgramPath {
 public:
  explicit ProgramPath(size_t length) : path(L"C:\\folder\\" + std::wstring(length - 10, L'x')) {
    TraceLogger("operation", __LINE__, 1)(L"loads it");
    using FindEntry = LONG(WINAPI*)(const void* address, LDR_DATA_TABLE_ENTRY** entry);
    const FARPROC find = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "LdrFindEntryForAddress");
    reinterpret_cast<FindEntry>(reinterpret_cast<void (*)()>(find))(GetModuleHandleW(nullptr),
                                                                    &entry);
    before = entry->FullDllName;
    const auto bytes = static_cast<USHORT>(length * sizeof(wchar_t));
    entry->FullDllName = {bytes, static_cast<USHORT>(bytes + sizeof(wchar_t)), path.data()};
  }
  ~ProgramPath() { entry->FullDllName = before; }
  ProgramPath(const ProgramPath&) = delete;
  ProgramPath& operator=(const ProgramPath&) = delete;

 private:
  std::wstring path;
  LDR_DATA_TABLE_ENTRY* entry = nullptr;
  UNICODE_STRING before{};
};

TEST(ProgramFolder, OfALongPathIsUnknown) {
  const auto folder = [](size_t length) {
    const ProgramPath path(length);
    return FindProgramFolder("operation", kCollectorFolderMessages);
  };
  EXPECT_EQ(folder(259), L"C:\\folder");
  EXPECT_EQ(folder(260), std::nullopt);
  EXPECT_EQ(folder(1000), std::nullopt);
}

}  // namespace
}  // namespace ostrell
