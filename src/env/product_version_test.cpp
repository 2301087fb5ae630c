#include "env/product_version.h"

#include <gtest/gtest.h>

#include "tests/support/fake_run.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

constexpr wchar_t kPath[] = L"C:\\Corvane\\VERSION";

TEST(ProductVersion, RecordedCases) {
  FakeRun fake;
  ProductVersionText version("before");
  for (const RecordedCase& recorded : CasesOf("product_version")) {
    const auto versions = recorded.All("version");
    size_t number = 0;
    for (const std::string& content : recorded.All("content")) {
      SCOPED_TRACE(content);
      fake.files.entries[kPath].content = content;
      EXPECT_EQ(ReadProductVersion(fake.Get(), version), recorded.Name() == "versions" ? 1 : 0);
      EXPECT_EQ(version.View(), versions.at(number++));
    }
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
  fake.files.entries.clear();
  EXPECT_FALSE(isRead());
}

}  // namespace
}  // namespace ostrell
