#include "reports/scan_statistics.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/bytes.h"

namespace ostrell {
namespace {

// The CRC was computed by another program.
constexpr std::string_view kPayload = "payload of the scanner";
const std::string kCrc = "\xD5\xB4\x21\x44";
const std::string kUnread = "\xFF\xFF\xFF\xFF";

std::string Length(uint64_t length) {
  std::string bytes;
  for (int i = 0; i < 8; ++i) {
    bytes += static_cast<char>(length >> (8 * i));
  }
  return bytes;
}

// A file that may say another length than it has, and whose reading may fail although it fills.
struct File : OpenFile {
  explicit File(std::string content, std::optional<uint64_t> length = {}, size_t failingRead = 0)
      : bytes(std::move(content)), size(length.value_or(bytes.size())), failing(failingRead) {}

  std::string bytes;
  uint64_t size;
  size_t failing;                       // the number of a reading, from 1
  mutable std::vector<size_t> asked{};  // bytes, of each reading

  std::optional<uint64_t> Size() const override { return size; }
  std::optional<size_t> ReadAt(uint64_t offset, std::span<std::byte> to) const override {
    asked.push_back(to.size());
    const size_t taken = offset < bytes.size()
                             ? bytes.copy(reinterpret_cast<char*>(to.data()), to.size(), offset)
                             : 0;
    return asked.size() != failing ? std::optional(taken) : std::nullopt;
  }

  std::optional<std::string> Payload() const {
    const auto payload = ReadScanStatistics(*this);
    return payload ? std::optional(std::string(TextOf(*payload))) : std::nullopt;
  }
};

TEST(ScanStatistics, ReadsSoundFilesOnly) {
  const std::string payload(kPayload);
  const std::string sound = kCrc + kUnread + Length(22) + payload;
  const struct {
    const char* what;
    File file;
    std::optional<std::string> payload;
  } cases[] = {
      {"sound", File(sound), payload},
      {"more behind it", File(sound + "more"), payload},
      {"empty payload", File(std::string(4, '\0') + kUnread + Length(0)), ""},
      {"other CRC", File(kUnread + kUnread + Length(22) + payload), std::nullopt},
      {"one byte changed", File(kCrc + kUnread + Length(22) + "Payload of the scanner"),
       std::nullopt},
      {"header alone", File(kCrc + kUnread + Length(22)), std::nullopt},
      {"half a header", File(kCrc + kUnread + "\x16"), std::nullopt},
      {"nothing", File(""), std::nullopt},
      {"cut since its length was told", File(sound.substr(0, 37), 38), std::nullopt},
      {"header not to be read", File(sound, 38, 1), std::nullopt},
      {"payload not to be read", File(sound, 38, 2), std::nullopt},
  };
  for (const auto& [what, file, expected] : cases) {
    EXPECT_EQ(file.Payload(), expected) << what;
  }
}

TEST(ScanStatistics, AsksForNoMoreThanThereIs) {
  constexpr uint64_t kFile = uint64_t{1} << 40;
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
      {~uint64_t{0} - 15, kFile, {16}},
      {268435456, kFile, {16, 1048576}},
      {268435457, kFile, {16}},
  };
  for (const auto& [length, fileSize, asked] : cases) {
    const File file(kCrc + kUnread + Length(length), fileSize);
    EXPECT_EQ(file.Payload(), std::nullopt);
    EXPECT_EQ(file.asked, asked) << length << " of " << fileSize;
  }
}

}  // namespace
}  // namespace ostrell
