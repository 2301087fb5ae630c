#include <gtest/gtest.h>

#include <span>

#include "base/bytes.h"
#include "platform/closed_library.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

using namespace std::string_view_literals;

constexpr auto kPackedRecord = "OPKR\xff\xff\x20\0\x1c\0\0\xc0\0\0{\"samples\":{}}"sv;

const Svclink& Loaded() {
  static const Svclink svclink(LoadSvclink());
  return svclink;
}

std::optional<uint64_t> VersionOf(const char* path) {
  const auto file = Loaded().OpenSignatureFile(path);
  const auto record = Loaded().TakeRecord(file.Get());
  return record ? std::optional(record->version) : std::nullopt;
}

int32_t WriteText(const SvclinkObjectOwner& stream, std::string_view text) {
  return stream->write(stream.Get(), text.data(), static_cast<uint32_t>(text.size()));
}

SvclinkObjectOwner StreamOf(std::string_view content) {
  SvclinkObjectOwner stream = Loaded().OpenStream();
  EXPECT_EQ(WriteText(stream, content), static_cast<int32_t>(content.size()));
  return stream;
}

// The bytes that a record's data accessor gives.
std::string BlockOf(const SvclinkRecordOwner& record) {
  uint32_t size = 0;
  const std::byte* block = record->data(record.Get(), &size);
  return std::string(TextOf(std::span(block, size)));
}

TEST(SvclinkTest, SignatureFileVersions) {
  const struct {
    std::string_view text;
    std::optional<uint64_t> version;
  } kCases[] = {
      {"OSTRELL-SIGNATURES 1\r\nversion = 20261101001\r\n", 20261101001},
      {"OSTRELL-SIGNATURES 1\nversion = 0\nfurther text", 0},
      {"OSTRELL-SIGNATURES 1\nversion = 18446744073709551615", 18446744073709551615U},
      {"OSTRELL-SIGNATURES 1\nversion = 18446744073709551616", std::nullopt},
      {"OSTRELL-SIGNATURES 1\nversion = -1", std::nullopt},
      {"OSTRELL-SIGNATURES 1\nversion = ", std::nullopt},
      {"OSTRELL-SIGNATURES 1\nversion = 7x", std::nullopt},
      {"OSTRELL-SIGNATURES 1\nversion=7", std::nullopt},
      {"OSTRELL-SIGNATURES 1\n\nversion = 7", std::nullopt},
      {"OSTRELL-SIGNATURES 1", std::nullopt},
      {"OSTRELL-SIGNATURES 2\nversion = 7", std::nullopt},
      {"\xef\xbb\xbfOSTRELL-SIGNATURES 1\nversion = 7", std::nullopt},
      {"", std::nullopt},
  };
  const TestFolder folder;
  const std::string path = folder.Utf8("patt.db");
  for (const auto& [text, version] : kCases) {
    folder.Write("patt.db", text);
    EXPECT_EQ(VersionOf(path.c_str()), version) << text;
  }
}

TEST(SvclinkTest, SignatureHeaderHasNoBlock) {
  const TestFolder folder;
  folder.Write("patt.db", "OSTRELL-SIGNATURES 1\nversion = 7\n");
  const auto file = Loaded().OpenSignatureFile(folder.Utf8("patt.db").c_str());
  EXPECT_EQ(Loaded().KindOf(file.Get()), 0U);
  const auto record = Loaded().TakeRecord(file.Get());
  ASSERT_TRUE(record);
  EXPECT_EQ(BlockOf(record), "");
  EXPECT_FALSE(Loaded().OpenSignatureFile(folder.Utf8("missing.db").c_str()));
  EXPECT_FALSE(Loaded().OpenSignatureFile("\xff"));
}

TEST(SvclinkTest, StreamGivesBackWhatWasWritten) {
  const auto stream = StreamOf("first ");
  EXPECT_EQ(WriteText(stream, "second"), 6);
  EXPECT_EQ(WriteText(stream, {}), 0);
  EXPECT_EQ(stream->size(stream.Get()), 12);
  const struct {
    uint64_t offset;
    uint32_t count;
    int32_t taken;
  } kCases[] = {{0, 12, 12}, {6, 4, 4}, {6, 0xffffffff, 6}, {11, 1, 1},
                {12, 1, 0},  {0, 0, 0}, {13, 0, -1},        {~uint64_t{0}, 2, -1}};
  for (const auto& [offset, count, taken] : kCases) {
    char buffer[16];
    EXPECT_EQ(stream->read(stream.Get(), offset, buffer, count), taken) << offset;
    const size_t length = taken > 0 ? taken : 0;
    EXPECT_EQ(std::string_view(buffer, length), "first second"sv.substr(offset % 12, length));
  }
}

TEST(SvclinkTest, PackedRecordIsHandedOutAsItCame) {
  auto stream = StreamOf(kPackedRecord.substr(0, 5));
  ASSERT_EQ(WriteText(stream, kPackedRecord.substr(5)), 23);
  const auto record = Loaded().TakeRecord(stream.Get());
  ASSERT_TRUE(record);
  stream.Reset();
  EXPECT_EQ(BlockOf(record), kPackedRecord);
}

TEST(SvclinkTest, PackedRecordIsKnownByItsFirstEightBytes) {
  const struct {
    std::string_view content;
    uint32_t kind;
    bool record;
  } kCases[] = {{"OPKR\xff\xff\x20\0"sv, 0x0020ffff, true},
                {"OPKR\x04\x03\x02\x81\x7f"sv, 0x81020304, true},
                {"OPKR\0\0\0\0"sv, 0, true},
                {"OPKR\xff\xff\x20"sv, 0, false},
                {"opkr\xff\xff\x20\0"sv, 0, false},
                {"{\"samples\":{}}"sv, 0, false},
                {""sv, 0, false}};
  for (const auto& [content, kind, record] : kCases) {
    const auto stream = StreamOf(content);
    EXPECT_EQ(Loaded().KindOf(stream.Get()), kind) << content;
    EXPECT_EQ(static_cast<bool>(Loaded().TakeRecord(stream.Get())), record) << content;
  }
}

TEST(SvclinkTest, MisuseOfAnObjectIsAFailure) {
  const auto stream = StreamOf(kPackedRecord);
  EXPECT_LT(stream->open(stream.Get(), "", 258), 0) << "opened twice";
  const auto createObject = LoadSvclink().createObject;
  EXPECT_EQ(createObject(2), nullptr);
  const SvclinkObjectOwner closed(createObject(1));
  EXPECT_LT(closed->open(closed.Get(), "", 0x8000), 0);
  EXPECT_LT(WriteText(closed, "x"), 0);
  EXPECT_FALSE(Loaded().TakeRecord(closed.Get()));
}

}  // namespace
}  // namespace ostrell
