#include "env/product_version.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/fake_run.h"

namespace ostrell {
namespace {

using namespace std::string_view_literals;

constexpr wchar_t kPath[] = L"C:\\Corvane\\VERSION";

TEST(ProductVersion, ContentsAndWhatTheyGive) {
  FakeRun fake;
  ProductVersionText version("before");
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
    fake.files.entries[kPath].content = content;
    EXPECT_EQ(ReadProductVersion(fake.Get(), version), result);
    EXPECT_EQ(version.View(), text);
  }
}

TEST(ProductVersion, FilesThatAreNotRead) {
  FakeRun fake;
  auto& entry = fake.files.entries[kPath];
  const auto isRead = [&] {
    ProductVersionText version("before");
    const int32_t result = ReadProductVersion(fake.Get(), version);
    EXPECT_EQ(version.IsEmpty(), result == 0);
    return result == 1;
  };
  EXPECT_TRUE(isRead());
  entry.isOpenForWriting = true;
  EXPECT_FALSE(isRead());
  entry = {.content = "5.0.1.2", .size = FakeFiles::kUntold};
  EXPECT_FALSE(isRead());
  entry = {.content = "5.0.1.2", .bad = 0};
  EXPECT_FALSE(isRead());
  entry = {.isDirectory = true};
  EXPECT_FALSE(isRead());
  fake.files.entries.clear();
  EXPECT_FALSE(isRead());
}

}  // namespace
}  // namespace ostrell
