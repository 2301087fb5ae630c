#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "base/handle_win.h"
#include "env/product_version.h"

namespace ostrell {
namespace {

using namespace std::string_view_literals;

// An install folder of its own for each test, with a name past ASCII.
class ProductVersionTest : public testing::Test {
 protected:
  void SetUp() override { std::filesystem::create_directories(folder); }
  void TearDown() override { std::filesystem::remove_all(folder); }

  void Write(std::string_view content) const {
    ASSERT_TRUE(std::ofstream(folder / L"VERSION", std::ios::binary) << content << std::flush);
  }
  int32_t Read() { return ReadProductVersion(WidePathText(folder.native() + L'\\'), version); }

  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() /
      (L"ostrell version \u00E9" + std::to_wstring(GetCurrentProcessId()));
  ProductVersionText version{"before"};
};

TEST_F(ProductVersionTest, ContentsAndWhatTheyGive) {
  const struct {
    std::string_view content;
    int32_t result;
    std::string_view version;
  } cases[] = {{"5.0.1.2", 1, "5.0.1.2"},
               {"\r \t\v5.0.1.2\n\f\r ", 1, "5.0.1.2"},
               {"255.255.255.255", 1, "255.255.255.255"},  // 15 bytes
               {"255.255.255.255\n", 0, ""},               // 16 bytes
               {"5.0.1.2         ", 0, ""},                // as many, though most would be trimmed
               {"5.0.1.2 \0xyz"sv, 1, "5.0.1.2"},
               {" not this\n", 0, "not this"},
               {"1.1.1.1\n2.2.2.2", 1, "1.1.1.1\n2.2.2.2"},
               {"\357\273\2775.0.1.2", 0, "\357\273\2775.0.1.2"},  // byte-order mark
               {"", 1, ""},
               {" \r\n", 1, ""}};
  for (const auto& [content, result, text] : cases) {
    SCOPED_TRACE(std::string(content));
    Write(content);
    EXPECT_EQ(Read(), result);
    EXPECT_EQ(version.View(), text);
  }
}

TEST_F(ProductVersionTest, MissingFileOrFolderInItsPlace) {
  EXPECT_EQ(Read(), 0);
  EXPECT_TRUE(version.IsEmpty());
  std::filesystem::create_directory(folder / L"VERSION");
  EXPECT_EQ(Read(), 0);
}

TEST_F(ProductVersionTest, FileOpenElsewhere) {
  Write("5.0.1.2");
  for (const DWORD access : {DWORD{GENERIC_READ}, DWORD{GENERIC_WRITE}}) {
    const FileHandle other(CreateFileW((folder / L"VERSION").c_str(), access,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                       0, nullptr));
    ASSERT_TRUE(other);
    EXPECT_EQ(Read(), access == GENERIC_READ ? 1 : 0);
  }
}

}  // namespace
}  // namespace ostrell
