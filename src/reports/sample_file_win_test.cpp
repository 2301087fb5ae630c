#include "reports/sample_file_win.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/handle_win.h"
#include "base/text.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

using State = SampleFile::State;

State StateOf(const std::string& path) {
  return SampleFile(path.c_str()).GetState();
}

TEST(SampleFile, SizesAndNames) {
  const TestFolder folder;
  const struct {
    size_t size;
    State state;
  } cases[] = {{0, State::kWrongSize},
               {1023, State::kWrongSize},
               {1024, State::kReadable},
               {5242880, State::kReadable},
               {5242881, State::kWrongSize}};
  for (const auto& [size, state] : cases) {
    const std::string text(size, 'x');
    folder.Write("sample-\xC3\xA9.bin", text);
    const SampleFile file(folder.Utf8("sample-\xC3\xA9.bin").c_str());
    ASSERT_EQ(file.GetState(), state) << size;
    if (state == State::kReadable) {
      EXPECT_EQ(TextOf(file.Bytes()), text);
    }
  }
  EXPECT_EQ(StateOf(folder.Utf8("missing")), State::kUnreadable);
  EXPECT_EQ(StateOf(folder.Utf8("")), State::kUnreadable);  // the folder itself
  EXPECT_EQ(StateOf(""), State::kUnreadable);
}

TEST(SampleFile, IsAFileOnADisk) {
  EXPECT_EQ(StateOf("NUL"), State::kUnreadable);
  constexpr char kPipe[] = "\\\\.\\pipe\\ostrell-sample-test";
  const FileHandle pipe(
      CreateNamedPipeA(kPipe, PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 4096, 4096, 0, nullptr));
  ASSERT_TRUE(pipe);
  EXPECT_EQ(StateOf(kPipe), State::kUnreadable);
}

// Under Wine a file of the build machine that says it has 4096 bytes, and ends before that.
TEST(SampleFile, IsReadAsAWhole) {
  EXPECT_EQ(StateOf("\\\\?\\unix\\sys\\kernel\\uevent_seqnum"), State::kUnreadable);
}

FileHandle Open(const std::filesystem::path& path, DWORD access, DWORD sharing) {
  return FileHandle(CreateFileW(path.c_str(), access, sharing, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
}

TEST(SampleFile, BesideOtherUsers) {
  constexpr DWORD kAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const TestFolder folder;
  folder.Write("sample.bin", std::string(2000, 'a'));
  const auto path = folder.Path() / "sample.bin";
  const std::string name = folder.Utf8("sample.bin");
  {
    const FileHandle locked = Open(path, GENERIC_READ, 0);
    ASSERT_TRUE(locked);
    EXPECT_EQ(StateOf(name), State::kUnreadable);
  }
  const FileHandle writer = Open(path, GENERIC_WRITE | DELETE, kAll);
  ASSERT_TRUE(writer);
  const SampleFile file(name.c_str());
  ASSERT_EQ(file.GetState(), State::kReadable);
  // It is written over and grows, is cut, and goes: what was opened stays what it was.
  const std::string other(100000, 'b');
  DWORD written = 0;
  EXPECT_TRUE(WriteFile(writer.Get(), other.data(), DWORD(other.size()), &written, nullptr));
  EXPECT_EQ(TextOf(file.Bytes()), std::string(2000, 'a'));
  SetFilePointer(writer.Get(), 0, nullptr, FILE_BEGIN);
  EXPECT_TRUE(SetEndOfFile(writer.Get()));
  DeleteFileW(path.c_str());
  EXPECT_EQ(TextOf(file.Bytes()), std::string(2000, 'a'));
}

// For a file of a sample's size at a path of exactly `length` UTF-16 units.
State StateAtLongPath(size_t length) {
  std::vector<std::wstring> folders = {L"\\\\?\\" +
                                       std::filesystem::temp_directory_path().wstring() + L"long"};
  while (length - folders.back().size() > 200) {
    folders.push_back(folders.back() + L"\\" + std::wstring(150, L'd'));
  }
  for (const std::wstring& folder : folders) {
    CreateDirectoryW(folder.c_str(), nullptr);
  }
  const std::wstring path =
      folders.back() + L"\\" + std::wstring(length - folders.back().size() - 1, L'f');
  {
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    const std::string text(1024, 'x');
    DWORD written = 0;
    EXPECT_TRUE(file && WriteFile(file.Get(), text.data(), DWORD(text.size()), &written, nullptr));
  }
  const State state = StateOf(Utf8FromWide(path));
  // Longer than the standard library deletes.
  EXPECT_TRUE(DeleteFileW(path.c_str()));
  for (; !folders.empty(); folders.pop_back()) {
    EXPECT_TRUE(RemoveDirectoryW(folders.back().c_str()));
  }
  return state;
}

TEST(SampleFile, PathsEndBefore512Units) {
  EXPECT_EQ(StateAtLongPath(511), State::kReadable);
  EXPECT_EQ(StateAtLongPath(512), State::kUnreadable);
  EXPECT_EQ(StateAtLongPath(600), State::kUnreadable);
}

}  // namespace
}  // namespace ostrell
