#include <gtest/gtest.h>

#include <span>

#include "base/bytes.h"
#include "platform/closed_library.h"
#include "tests/support/recorded_cases.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

const Svclink& Loaded() {
  static const Svclink svclink(LoadSvclink());
  return svclink;
}

int32_t WriteText(const SvclinkObjectOwner& stream, std::string_view text) {
  return stream->write(stream.Get(), text.data(), static_cast<uint32_t>(text.size()));
}

SvclinkObjectOwner StreamOf(std::string_view content) {
  SvclinkObjectOwner stream = Loaded().OpenStream();
  EXPECT_EQ(WriteText(stream, content), static_cast<int32_t>(content.size()));
  return stream;
}

std::string BlockOf(const SvclinkRecordOwner& record) {
  uint32_t size = 1;
  const std::byte* block = record->data(record.Get(), &size);
  return std::string(TextOf(std::span(block, size)));
}

TEST(SvclinkTest, SignatureFileHasAVersionAndNoBlock) {
  const RecordedCase cases(OSTRELL_PRODUCT_CASES "/signature_file.case");
  const TestFolder folder;
  for (size_t i = 0; i < cases.All("file").size(); ++i) {
    const std::string text = cases.All("file")[i];
    folder.Write("patt.db", text);
    const auto file = Loaded().OpenSignatureFile(folder.Utf8("patt.db").c_str());
    EXPECT_EQ(Loaded().KindOf(file.Get()), 0U);
    const auto record = Loaded().TakeRecord(file.Get());
    EXPECT_EQ(record ? std::to_string(record->version) : "none", cases.All("version").at(i))
        << text;
    EXPECT_EQ(record ? BlockOf(record) : "", "");
  }
  EXPECT_FALSE(Loaded().OpenSignatureFile(folder.Utf8("missing.db").c_str()));
  EXPECT_FALSE(Loaded().OpenSignatureFile("\xff"));
}

TEST(SvclinkTest, OpenStreamGivesBackWhatWasWritten) {
  const auto stream = StreamOf("first ");
  EXPECT_EQ(WriteText(stream, "second"), 6);
  EXPECT_EQ(stream->size(stream.Get()), 12);
  char buffer[16];
  EXPECT_EQ(stream->read(stream.Get(), 6, buffer, 4), 4);
  EXPECT_EQ(stream->read(stream.Get(), 10, buffer + 4, 0xffffffff), 2);
  EXPECT_EQ(std::string_view(buffer, 6), "second");
  EXPECT_EQ(stream->read(stream.Get(), 12, buffer, 1), 0);
  EXPECT_LT(stream->read(stream.Get(), 13, buffer, 0), 0);
  EXPECT_LT(stream->open(stream.Get(), "", 258), 0) << "opened twice";
  const auto createObject = LoadSvclink().createObject;
  EXPECT_EQ(createObject(2), nullptr);
  const SvclinkObjectOwner closed(createObject(1));
  EXPECT_LT(closed->open(closed.Get(), "", 0x8000), 0);
  EXPECT_LT(WriteText(closed, "x"), 0);
}

// It is handed out as it came, and outlives its stream.
TEST(SvclinkTest, PackedRecordIsKnownByItsFirstEightBytes) {
  const RecordedCase cases(OSTRELL_PRODUCT_CASES "/packed_record.case");
  for (size_t i = 0; i < cases.All("stream").size(); ++i) {
    const std::string content = cases.All("stream")[i];
    auto stream = StreamOf(content);
    const uint32_t kind = Loaded().KindOf(stream.Get());
    const auto record = Loaded().TakeRecord(stream.Get());
    stream.Reset();
    EXPECT_EQ(std::to_string(kind) + (record ? "" : ", no record"), cases.All("kind").at(i))
        << content;
    EXPECT_EQ(record ? BlockOf(record) : content, content);
  }
}

}  // namespace
}  // namespace ostrell
