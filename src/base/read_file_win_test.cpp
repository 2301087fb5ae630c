#include "base/read_file_win.h"

#include <gtest/gtest.h>

#include <string>

#include "base/handle_win.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

FileHandle Open(const std::filesystem::path& path, DWORD access) {
  return FileHandle(CreateFileW(path.c_str(), access, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
}

TEST(ReadExactly, AllThatWasAskedForOrNothing) {
  const TestFolder folder;
  std::string text(3 << 20, '-');
  text.replace(0, 4, "head");
  text.replace(text.size() - 4, 4, "tail");
  folder.Write("file", text);
  const auto path = folder.Path() / "file";
  {
    const FileHandle file = Open(path, GENERIC_READ);
    std::string head(4, '\0');
    std::string rest(text.size() - 4, '\0');
    EXPECT_TRUE(ReadExactly(file.Get(), std::as_writable_bytes(std::span(head))));
    EXPECT_EQ(head, "head");
    EXPECT_TRUE(ReadExactly(file.Get(), std::as_writable_bytes(std::span(rest))));
    EXPECT_TRUE(head + rest == text);
    EXPECT_TRUE(ReadExactly(file.Get(), {}));
    EXPECT_FALSE(ReadExactly(file.Get(), std::as_writable_bytes(std::span(head))));
  }
  std::string longer(text.size() + 1, '\0');
  EXPECT_FALSE(
      ReadExactly(Open(path, GENERIC_READ).Get(), std::as_writable_bytes(std::span(longer))));
  std::string byte(1, '\0');
  EXPECT_FALSE(
      ReadExactly(Open(path, GENERIC_WRITE).Get(), std::as_writable_bytes(std::span(byte))));
}

}  // namespace
}  // namespace ostrell
