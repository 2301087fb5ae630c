#include "base/files_win.h"

#include <gtest/gtest.h>
#include <winternl.h>

#include <set>
#include <string>
#include <vector>

#include "base/handle_win.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

constexpr FileUse kUses[] = {FileUse::kStable, FileUse::kShared, FileUse::kLog, FileUse::kForeign,
                             FileUse::kMapped};
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

FileHandle OpenElsewhere(const std::filesystem::path& path, DWORD access, DWORD sharing) {
  return FileHandle(CreateFileW(path.c_str(), access, sharing, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
}

std::string Read(const OpenFile& file, uint64_t offset, size_t count) {
  std::string text(count, '\0');
  const auto taken = file.ReadAt(offset, std::as_writable_bytes(std::span(text)));
  return taken ? text.substr(0, *taken) : "nothing";
}

class FilesTest : public testing::Test {
 protected:
  std::wstring Path(const wchar_t* name) const { return (folder.Path() / name).wstring(); }

  const TestFolder folder;
  const WindowsFiles files;
};

TEST_F(FilesTest, ReadsAtAnyPlaceAndEndsWithTheFile) {
  std::ofstream(folder.Path() / L"file-\u00e9") << "0123456789";
  for (const FileUse use : kUses) {
    const auto file = files.Open(Path(L"file-\u00e9"), use);
    ASSERT_TRUE(file) << int(use);
    EXPECT_EQ(file->Size(), 10u);
    EXPECT_EQ(Read(*file, 7, 9), "789");
    EXPECT_EQ(Read(*file, 0, 2), "01");
    EXPECT_EQ(Read(*file, 10, 1), "");
    EXPECT_EQ(Read(*file, uint64_t{1} << 40, 1), "");
  }
}

TEST_F(FilesTest, AllThatWasAskedForOrNothing) {
  std::string text(3 << 20, '-');
  text.replace(text.size() - 4, 4, "tail");
  folder.Write("file", text);
  const auto file = files.Open(Path(L"file"), FileUse::kStable);
  ASSERT_TRUE(file);
  std::string rest(text.size() - 4, '\0');
  const auto bytes = std::as_writable_bytes(std::span(rest));
  EXPECT_TRUE(ReadExactly(*file, 4, bytes));
  EXPECT_TRUE(rest == text.substr(4));
  EXPECT_TRUE(ReadExactly(*file, text.size(), {}));
  EXPECT_FALSE(ReadExactly(*file, 5, bytes));
}

// What opens beside another user, by what that one does and lets others do.
TEST_F(FilesTest, BesideOtherUsers) {
  folder.Write("file", "text");
  const std::wstring path = Path(L"file");
  const struct {
    const char* what;
    DWORD access;
    DWORD sharing;
    std::vector<bool> opens;  // by kUses
  } cases[] = {{"reader", GENERIC_READ, kShareAll, {true, true, true, true, true}},
               {"writer", GENERIC_WRITE, kShareAll, {false, true, true, true, false}},
               {"deleter", DELETE, kShareAll, {false, false, true, true, false}},
               {"lonely reader", GENERIC_READ, 0, {false, false, false, false, false}}};
  for (const auto& [what, access, sharing, opens] : cases) {
    const FileHandle other = OpenElsewhere(path, access, sharing);
    ASSERT_TRUE(other);
    for (size_t i = 0; i < std::size(kUses); ++i) {
      uint32_t error = 0;
      EXPECT_EQ(files.Open(path, kUses[i], &error) != nullptr, opens[i]) << what << i;
      EXPECT_EQ(error, opens[i] ? 0u : 32u) << what << i;  // ERROR_SHARING_VIOLATION
    }
  }
  // What others may do while it is open.
  for (const FileUse use : kUses) {
    folder.Write("file", "text");
    const auto file = files.Open(path, use);
    const bool mayWrite = use != FileUse::kStable && use != FileUse::kMapped;
    EXPECT_EQ(static_cast<bool>(OpenElsewhere(path, GENERIC_WRITE, kShareAll)), mayWrite);
    EXPECT_EQ(files.Delete(path), mayWrite && use != FileUse::kShared) << int(use);
  }
}

TEST_F(FilesTest, WhatDoesNotOpen) {
  folder.Write("empty", "");
  for (const FileUse use : kUses) {
    uint32_t error = 0;
    EXPECT_FALSE(files.Open(Path(L"missing"), use, &error));
    EXPECT_EQ(error, 2u);
    EXPECT_FALSE(files.Open(folder.Path().wstring(), use)) << "a folder";
    EXPECT_FALSE(files.Open(L"", use));
    error = 0;
    files.Open(Path(L"empty"), use, &error);
    EXPECT_EQ(error, use == FileUse::kMapped ? 1006u : 0u);  // ERROR_FILE_INVALID
  }
}

// A name that anybody may have chosen must not lead to a pipe or a device.
TEST_F(FilesTest, ForeignNamesLeadToDisksOnly) {
  EXPECT_FALSE(files.Open(L"NUL", FileUse::kForeign));
  constexpr wchar_t kPipe[] = L"\\\\.\\pipe\\ostrell-files-test";
  const FileHandle pipe(
      CreateNamedPipeW(kPipe, PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 4096, 4096, 0, nullptr));
  ASSERT_TRUE(pipe);
  EXPECT_FALSE(files.Open(kPipe, FileUse::kForeign));
}

// Only there a 32-bit process is to see the real system folder, and only while the file opens.
TEST_F(FilesTest, RedirectionIsOffWhileAForeignNameOpens) {
  folder.Write("file", "text");
  NotedRedirection redirection;
  const WindowsFiles redirected(redirection.api);
  for (const FileUse use : kUses) {
    redirected.Open(Path(L"file"), use);
    redirected.Open(Path(L"missing"), use);
  }
  EXPECT_EQ(redirection.calls, "off on off on ");
}

TEST_F(FilesTest, ListsNamesOfEitherLength) {
  for (const char* name : {"a.dmp", "B.DMP", "memory.dmpbackup", "c.txt"}) {
    folder.Write(name, "");
  }
  std::filesystem::create_directory(folder.Path() / "folder.dmp");
  std::set<std::wstring> names;
  files.List(folder.Path().wstring(), L"*.dmp", [&](const std::wstring& name, bool isDirectory) {
    names.insert(isDirectory ? name + L"\\" : name);
  });
  EXPECT_EQ(names,
            (std::set<std::wstring>{L"a.dmp", L"B.DMP", L"memory.dmpbackup", L"folder.dmp\\"}));
  files.List(Path(L"missing"), L"*", [](const std::wstring&, bool) { FAIL(); });
}

TEST_F(FilesTest, StatusSaysWhenItWasWritten) {
  folder.Write("file", "");
  const FileHandle file = OpenElsewhere(Path(L"file"), FILE_WRITE_ATTRIBUTES, kShareAll);
  const FILETIME written{0x89ABCDEF, 0x01DB2345};
  ASSERT_TRUE(SetFileTime(file.Get(), nullptr, nullptr, &written));
  const FileStatus status = files.Status(Path(L"file")).value();
  EXPECT_FALSE(status.isDirectory);
  // File systems keep 100 ns at best.
  EXPECT_EQ(status.lastWrite / 10000, uint64_t{0x01DB234589ABCDEF} / 10000);
  EXPECT_TRUE(files.Status(folder.Path().wstring()).value().isDirectory);
  EXPECT_FALSE(files.Status(Path(L"missing")));
}

// Lets the system give a path of another length for the running program.
TEST_F(FilesTest, LongProgramPathIsUnknown) {
  using FindEntry = LONG(WINAPI*)(const void* address, LDR_DATA_TABLE_ENTRY** entry);
  const FARPROC find = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "LdrFindEntryForAddress");
  LDR_DATA_TABLE_ENTRY* entry = nullptr;
  reinterpret_cast<FindEntry>(reinterpret_cast<void (*)()>(find))(GetModuleHandleW(nullptr),
                                                                  &entry);
  const UNICODE_STRING before = entry->FullDllName;
  for (const USHORT length : {USHORT{259}, USHORT{260}, USHORT{1000}}) {
    std::wstring path = L"C:\\folder\\" + std::wstring(length - 10, L'x');
    entry->FullDllName = {static_cast<USHORT>(2 * length), static_cast<USHORT>(2 * length + 2),
                          path.data()};
    const auto found = files.ProgramPath();
    entry->FullDllName = before;
    EXPECT_EQ(found, length < 260 ? std::optional(path) : std::nullopt);
  }
}

}  // namespace
}  // namespace ostrell
