#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "tests/support/server_record.h"
#include "transport/fetch_packed_json.h"
#include "transport/http.h"

// FetchPackedJson against a running report server, with a table of functions in svclink's place.

namespace ostrell {
namespace {

using ::testing::ElementsAre;

constexpr uint32_t kPackedRecordKind = 0x20FFFF;
constexpr int32_t kUntouched = -1;

// What was done to the functions, and what they do.
struct FakeLibrary {
  uint64_t written = 0;
  int live = 0;  // streams and records not yet released

  int32_t openResult = 0;
  int32_t writeLess = 0;  // bytes that a write does not take
  uint32_t kind = kPackedRecordKind;
  int32_t queryResult = 1;
  int32_t takeResult = 0;
  bool createFails = false;
  bool hasWrite = true;
  bool takeGivesNothing = false;
  bool hasData = true;
  bool dataIsNull = false;
};
FakeLibrary fake;

struct FakeStream : SvclinkObject {
  std::string bytes;
};

struct FakeRecord : SvclinkRecord {
  std::string bytes;
};

int32_t WriteStream(SvclinkObject* stream, const void* from, uint32_t count) {
  static_cast<FakeStream*>(stream)->bytes.append(static_cast<const char*>(from), count);
  fake.written += count;
  return static_cast<int32_t>(count) - fake.writeLess;
}

int32_t OpenStream(SvclinkObject*, const char* path, uint32_t flags) {
  EXPECT_STREQ(path, "");
  EXPECT_EQ(flags, 258u);
  return fake.openResult;
}

SvclinkObject* CreateObject(int32_t kind) {
  EXPECT_EQ(kind, 1);
  if (fake.createFails) {
    return nullptr;
  }
  ++fake.live;
  auto* const stream = new FakeStream{};
  stream->release = [](SvclinkObject* object) {
    --fake.live;
    delete static_cast<FakeStream*>(object);
  };
  stream->write = fake.hasWrite ? WriteStream : nullptr;
  stream->open = OpenStream;
  return stream;
}

int32_t QueryKind(SvclinkObject*, uint32_t* kind, int32_t flag) {
  EXPECT_EQ(flag, 1);
  *kind = fake.kind;
  return fake.queryResult;
}

int32_t TakeRecord(SvclinkObject* stream, SvclinkRecord** taken, int32_t flag) {
  EXPECT_EQ(flag, 0);
  if (fake.takeResult < 0 || fake.takeGivesNothing) {
    return fake.takeResult;
  }
  ++fake.live;
  auto* const record = new FakeRecord{};
  record->bytes = static_cast<FakeStream*>(stream)->bytes;
  record->release = [](SvclinkRecord* released) {
    --fake.live;
    delete static_cast<FakeRecord*>(released);
  };
  const auto data = [](SvclinkRecord* read, uint32_t* size) -> const std::byte* {
    const std::string& bytes = static_cast<FakeRecord*>(read)->bytes;
    *size = static_cast<uint32_t>(bytes.size());
    return fake.dataIsNull ? nullptr : BytesOf(bytes).data();
  };
  record->data = fake.hasData ? +data : nullptr;
  *taken = record;
  return fake.takeResult;
}

constexpr SvclinkEntries kFakeEntries = {
    .queryKind = QueryKind, .createObject = CreateObject, .takeRecord = TakeRecord};

class FetchPackedJsonTest : public testing::Test {
 protected:
  FetchPackedJsonTest() { fake = {}; }

  JsonOwner Fetch(const char* fault, const SvclinkEntries& entries = kFakeEntries) {
    JsonOwner json =
        FetchPackedJson(ReportUrlOf("rc1", token, fault).c_str(), &status, Svclink(entries));
    EXPECT_EQ(fake.live, 0) << "streams and records are released";
    return json;
  }

  const std::string token = FreshToken();
  int32_t status = kUntouched;
};

TEST_F(FetchPackedJsonTest, GoodAnswer) {
  const JsonOwner json = Fetch("");
  ASSERT_TRUE(json);
  EXPECT_TRUE(json_is_object(json_object_get(json.Get(), "samples")));
  EXPECT_EQ(json->refcount, 1u);
  EXPECT_EQ(status, 200);
  const auto requests = RequestsWith("regid", token);
  ASSERT_THAT(StepsOf(requests), ElementsAre("GET 200"));
  EXPECT_THAT(HeaderNamesOf(requests[0]), ElementsAre("Accept", "Host"));
}

TEST_F(FetchPackedJsonTest, StatusIsLeftToTheCaller) {
  EXPECT_TRUE(Fetch("status-404"));
  EXPECT_EQ(status, 404);
  fake.takeResult = 5;  // any that is not negative is success
  EXPECT_TRUE(FetchPackedJson(ReportUrlOf("rc1", token).c_str(), nullptr, Svclink(kFakeEntries)));
}

TEST_F(FetchPackedJsonTest, AnswersThatAreNone) {
  const struct {
    const char* fault;
    int32_t status;
  } kCases[] = {
      {"not-json", 200},   {"bad-size", 200},   {"bad-extension", 200},
      {"short", 200},      {"garbage", 200},    {"redirect", 302},
      {"cut", kUntouched}, {"big", kUntouched}, {"endless", kUntouched},
  };
  for (const auto& testCase : kCases) {
    SCOPED_TRACE(testCase.fault);
    fake = {};
    status = kUntouched;
    EXPECT_FALSE(Fetch(testCase.fault));
    EXPECT_EQ(status, testCase.status);
    EXPECT_LE(fake.written, kMaxAnswerBytes);
  }
  EXPECT_EQ(RequestsWith("regid", token).size(), std::size(kCases)) << "no request is repeated";
}

TEST_F(FetchPackedJsonTest, LibraryThatFails) {
  SvclinkEntries withoutQuery = kFakeEntries;
  withoutQuery.queryKind = nullptr;
  SvclinkEntries withoutTake = kFakeEntries;
  withoutTake.takeRecord = nullptr;
  const struct {
    const char* name;
    FakeLibrary library;
    int32_t status;
    SvclinkEntries entries = kFakeEntries;
  } kCases[] = {
      {"no entry", {}, kUntouched, {}},
      {"no stream", {.createFails = true}, kUntouched},
      {"stream not opened", {.openResult = -1}, kUntouched},
      {"stream without write", {.hasWrite = false}, kUntouched},
      {"one byte less", {.writeLess = 1}, kUntouched},
      {"one byte more", {.writeLess = -1}, kUntouched},
      {"no query", {}, 200, withoutQuery},
      {"another kind", {.kind = kPackedRecordKind - 1}, 200},
      {"query gives 0", {.queryResult = 0}, 200},
      {"query gives -1", {.queryResult = -1}, 200},
      {"query gives 2", {.queryResult = 2}, 200},
      {"no take", {}, 200, withoutTake},
      {"take fails", {.takeResult = -1}, 200},
      {"take gives nothing", {.takeGivesNothing = true}, 200},
      {"record without data", {.hasData = false}, 200},
      {"data is null", {.dataIsNull = true}, 200},
  };
  for (const auto& testCase : kCases) {
    SCOPED_TRACE(testCase.name);
    fake = testCase.library;
    status = kUntouched;
    EXPECT_FALSE(Fetch("", testCase.entries));
    EXPECT_EQ(status, testCase.status);
  }
  EXPECT_EQ(RequestsWith("regid", token).size(), std::size(kCases) - 3)
      << "without a stream nothing is asked";
}

}  // namespace
}  // namespace ostrell
