#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "base/handle_win.h"
#include "base/json.h"
#include "platform/closed_library.h"
#include "tests/support/private_registry_win.h"
#include "tests/support/recorded_cases.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

using testing::Optional;

constexpr char kFile[] = "settings/ostrell.json";

class PolicyDbTest : public testing::Test {
 protected:
  PolicyDbTest() { SetDataPath(folder.Path()); }

  static void SetDataPath(const std::filesystem::path& path) {
    PrivateRegistry::SetText(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velmora\\Corvane\\app", L"DataPath",
                             path.wstring());
  }
  static SettingsStoreOwner Open(const char* name = "ostrell") {
    return PolicyDb(LoadPolicyDb()).OpenSettingsStore(name);
  }
  PolicyDocumentOwner OpenDocument(int32_t document) const {
    return PolicyDb(LoadPolicyDb()).OpenDocument(document, folder.Utf8("").c_str());
  }

  void ExpectOnly(const std::string& content) const {
    EXPECT_THAT(ContentOf(folder.Path() / kFile), Optional(content));
    const std::filesystem::directory_iterator files(folder.Path() / "settings");
    EXPECT_EQ(std::distance(begin(files), end(files)), 1);
  }

  TestFolder folder;
  PrivateRegistry registry;
};

std::optional<int64_t> Int64(const SettingsStoreOwner& store, const char* key) {
  int64_t value = 0;
  return store->ReadInt64(key, &value) != 0 ? std::optional(value) : std::nullopt;
}

TEST_F(PolicyDbTest, SettingIsFoundUnderItsOwnWidthOnly) {
  folder.Write(kFile, R"({"int32": {"low": -2147483648, "high": 2147483647},
                          "int64": {"rpttm_ui": 1, "low": -9223372036854775808}})");
  const auto store = Open();
  ASSERT_TRUE(store);
  int32_t narrow = 0;
  EXPECT_TRUE(store->ReadInt32("low", &narrow) && narrow == std::numeric_limits<int32_t>::min());
  EXPECT_TRUE(store->ReadInt32("high", &narrow) && narrow == std::numeric_limits<int32_t>::max());
  EXPECT_THAT(Int64(store, "low"), Optional(std::numeric_limits<int64_t>::min()));
  EXPECT_EQ(Int64(store, "high"), std::nullopt);
  EXPECT_FALSE(store->ReadInt32("rpttm_ui", &narrow));
  // Changed by hand, it counts at once.
  folder.Write(kFile, R"({"int64": {"rpttm_ui": 3}})");
  EXPECT_THAT(Int64(store, "rpttm_ui"), Optional(3));
}

TEST_F(PolicyDbTest, WriteMakesTheFileAndKeepsEverythingElse) {
  const auto store = Open();
  ASSERT_TRUE(store);
  EXPECT_EQ(Int64(store, "a"), std::nullopt);
  EXPECT_NE(store->WriteInt64("a", std::numeric_limits<int64_t>::max()), 0);
  ExpectOnly("{\n  \"int64\": {\n    \"a\": 9223372036854775807\n  }\n}\n");
  folder.Write(kFile, R"({"note": "x", "int32": {"a": 5}, "int64": {"b": 7, "a": 8}})");
  EXPECT_NE(store->WriteInt64("a", -9), 0);
  const std::string written =
      "{\n  \"note\": \"x\",\n  \"int32\": {\n    \"a\": 5\n  },\n"
      "  \"int64\": {\n    \"b\": 7,\n    \"a\": -9\n  }\n}\n";
  ExpectOnly(written);
  const FileHandle noDeleting(CreateFileW((folder.Path() / kFile).c_str(), GENERIC_READ,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                          OPEN_EXISTING, 0, nullptr));
  EXPECT_EQ(store->WriteInt64("a", 2), 0);
  ExpectOnly(written);
}

TEST_F(PolicyDbTest, DamagedSettingsGiveNoStoreAndStay) {
  const auto earlier = Open();
  const RecordedCase cases(OSTRELL_PRODUCT_CASES "/settings.case");
  for (const std::string& damage : cases.All("damaged")) {
    folder.Write(kFile, damage);
    EXPECT_FALSE(Open()) << damage;
    EXPECT_EQ(Int64(earlier, "a"), std::nullopt);
    EXPECT_EQ(earlier->WriteInt64("a", 2), 0);
    ExpectOnly(damage);
  }
}

TEST_F(PolicyDbTest, DataPathMustExistAndFeatureNameStaysInIt) {
  folder.Write("secret.json", "{}");
  for (const char* name : {"", "..\\secret", "../secret", "a.b", "c:"}) {
    EXPECT_FALSE(Open(name)) << name;
  }
  EXPECT_TRUE(Open());
  SetDataPath(folder.Path() / "secret.json");
  EXPECT_FALSE(Open());
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velmora");
  EXPECT_FALSE(Open());
}

// The program's copy of jansson finds a key in an object that the library's code has made.
TEST_F(PolicyDbTest, EveryValueOfADocumentIsAReferenceOfItsOwn) {
  EXPECT_FALSE(OpenDocument(25));
  folder.Write("documents/25.json", "{\"id\": 1, \"id\": 2}");
  EXPECT_FALSE(OpenDocument(25));
  folder.Write("documents/25.json", R"({"name": "sample", "id": 4711})");
  auto document = OpenDocument(25);
  ASSERT_TRUE(document);
  EXPECT_FALSE(OpenDocument(-25));
  EXPECT_FALSE(PolicyDb(LoadPolicyDb()).OpenDocument(25, "C:\\missing folder"));
  const JsonOwner first(document->Json());
  const JsonOwner second(document->Json());
  EXPECT_EQ(document->Query(first.Get()), nullptr);
  document.Reset();
  EXPECT_EQ(first->refcount, 2U);
  EXPECT_EQ(json_integer_value(json_object_get(second.Get(), "id")), 4711);
}

TEST_F(PolicyDbTest, RecordStoreAnswersQueries) {
  const JsonOwner query(json_loads(R"({"c": [], "o": [{"n": "ts", "t": "ASC"}]})", 0, nullptr));
  const auto found = [&] { return CompactText(JsonOwner(OpenDocument(0)->Query(query.Get()))); };
  EXPECT_EQ(found(), "[]");
  folder.Write("records.json", R"([{"ts": 2}, {"ts": 1}])");
  EXPECT_EQ(found(), R"([{"ts":1},{"ts":2}])");
  EXPECT_EQ(OpenDocument(0)->Query(nullptr), nullptr);
  for (const char* damage : {"", "{}", "[{}, 1]", "[{\"ts\": 1, \"ts\": 2}]"}) {
    folder.Write("records.json", damage);
    EXPECT_FALSE(OpenDocument(0)) << damage;
  }
}

}  // namespace
}  // namespace ostrell
