#include "reports/scan_statistics.h"

#include <gtest/gtest.h>

#include <vector>

// Sound and damaged files are seeds of the fuzz target, which reads them in a second way.

namespace ostrell {
namespace {

// A file of that size whose header says that payload length, and whose CRC is wrong.
struct File : OpenFile {
  uint64_t size;
  uint64_t length;
  mutable std::vector<size_t> asked{};  // bytes, of each reading

  File(uint64_t fileSize, uint64_t payload) : size(fileSize), length(payload) {}
  std::optional<uint64_t> Size() const override { return size; }
  std::optional<size_t> ReadAt(uint64_t offset, std::span<std::byte> to) const override {
    asked.push_back(to.size());
    for (size_t i = 0; i < 8 && offset == 0; ++i) {
      to[8 + i] = static_cast<std::byte>(length >> (8 * i));
    }
    return offset == 0 ? std::optional(to.size()) : std::nullopt;
  }
};

TEST(ScanStatistics, AsksForNoMoreThanThereIs) {
  constexpr uint64_t kLarge = uint64_t{1} << 40;
  const struct {
    uint64_t length;
    uint64_t fileSize;
    std::vector<size_t> asked;
  } cases[] = {
      {22, 15, {}},
      {22, 37, {16}},
      {22, 38, {16, 22}},
      {uint64_t{1} << 63, 38, {16}},
      {~uint64_t{0}, 38, {16}},
      {~uint64_t{0} - 15, kLarge, {16}},
      {268435456, kLarge, {16, 1048576}},
      {268435457, kLarge, {16}},
  };
  for (const auto& [length, fileSize, asked] : cases) {
    const File file(fileSize, length);
    EXPECT_FALSE(ReadScanStatistics(file));
    EXPECT_EQ(file.asked, asked) << length << " of " << fileSize;
  }
}

}  // namespace
}  // namespace ostrell
