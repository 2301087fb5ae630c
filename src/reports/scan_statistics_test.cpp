#include "reports/scan_statistics.h"

#include <gtest/gtest.h>

#include <string>

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

TEST(ScanStatisticsPayload, ReadsSoundFilesOnly) {
  const std::string payload(kPayload);
  const struct {
    const char* what;
    std::string file;
    std::optional<std::string> payload;
  } cases[] = {
      {"sound", kCrc + kUnread + Length(22) + payload, payload},
      {"more behind it", kCrc + kUnread + Length(22) + payload + "more", payload},
      {"empty payload", std::string(4, '\0') + kUnread + Length(0), ""},
      {"other CRC", kUnread + kUnread + Length(22) + payload, std::nullopt},
      {"one byte changed", kCrc + kUnread + Length(22) + "Payload of the scanner", std::nullopt},
      {"one byte short", kCrc + kUnread + Length(22) + payload.substr(1), std::nullopt},
      {"length past the end", kCrc + kUnread + Length(23) + payload, std::nullopt},
      {"length of 2^63", kCrc + kUnread + Length(uint64_t{1} << 63) + payload, std::nullopt},
      {"largest length", kCrc + kUnread + Length(~uint64_t{0}) + payload, std::nullopt},
      {"header alone", kCrc + kUnread + Length(22), std::nullopt},
      {"half a header", kCrc + kUnread + "\x16", std::nullopt},
      {"nothing", "", std::nullopt},
  };
  for (const auto& [what, file, expected] : cases) {
    const auto found = ScanStatisticsPayload(BytesOf(file));
    ASSERT_EQ(found.has_value(), expected.has_value()) << what;
    if (found) {
      EXPECT_EQ(TextOf(*found), *expected) << what;
    }
  }
}

}  // namespace
}  // namespace ostrell
