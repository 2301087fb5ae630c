#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "base/handle_win.h"
#include "base/json.h"
#include "platform/closed_library.h"
#include "tests/support/private_registry_win.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

using testing::Optional;

constexpr char kFile[] = "settings/ostrell.json";

class SettingsStoreTest : public testing::Test {
 protected:
  SettingsStoreTest() { SetDataPath(folder.Path().wstring()); }

  static void SetDataPath(const std::wstring& path) {
    PrivateRegistry::SetText(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velmora\\Corvane\\app", L"DataPath",
                             path);
  }
  static SettingsStoreOwner Open() { return PolicyDb(LoadPolicyDb()).OpenSettingsStore("ostrell"); }

  std::optional<std::string> Content() const { return ContentOf(folder.Path() / kFile); }
  // No temporary file may stay behind.
  std::ptrdiff_t FilesInSettings() const {
    const std::filesystem::directory_iterator files(folder.Path() / "settings");
    return std::distance(begin(files), end(files));
  }

  TestFolder folder;
  PrivateRegistry registry;
};

std::optional<int32_t> Int32(const SettingsStoreOwner& store, const char* key) {
  int32_t value = 0;
  return store->ReadInt32(key, &value) != 0 ? std::optional(value) : std::nullopt;
}

std::optional<int64_t> Int64(const SettingsStoreOwner& store, const char* key) {
  int64_t value = 0;
  return store->ReadInt64(key, &value) != 0 ? std::optional(value) : std::nullopt;
}

TEST_F(SettingsStoreTest, FindsAKeyOnlyUnderItsOwnWidth) {
  folder.Write(kFile, R"({"int32": {"isReport": 1, "low": -2147483648, "high": 2147483647},
                          "int64": {"rpttm_ui": 1, "low": -9223372036854775808}})");
  const auto store = Open();
  ASSERT_TRUE(store);
  EXPECT_THAT(Int32(store, "isReport"), Optional(1));
  EXPECT_EQ(Int64(store, "isReport"), std::nullopt);
  EXPECT_THAT(Int64(store, "rpttm_ui"), Optional(1));
  EXPECT_EQ(Int32(store, "rpttm_ui"), std::nullopt);
  EXPECT_THAT(Int32(store, "low"), Optional(std::numeric_limits<int32_t>::min()));
  EXPECT_THAT(Int32(store, "high"), Optional(std::numeric_limits<int32_t>::max()));
  EXPECT_THAT(Int64(store, "low"), Optional(std::numeric_limits<int64_t>::min()));
  EXPECT_EQ(Int64(store, "missing"), std::nullopt);
}

TEST_F(SettingsStoreTest, FirstWriteMakesTheFile) {
  const auto store = Open();
  ASSERT_TRUE(store);
  EXPECT_EQ(Int64(store, "rpttm_ui"), std::nullopt);
  EXPECT_NE(store->WriteInt64("rpttm_ui", std::numeric_limits<int64_t>::max()), 0);
  EXPECT_THAT(Content(), Optional(std::string("{\n  \"int64\": {\n"
                                              "    \"rpttm_ui\": 9223372036854775807\n  }\n}\n")));
  EXPECT_THAT(Int64(Open(), "rpttm_ui"), Optional(std::numeric_limits<int64_t>::max()));
  EXPECT_EQ(FilesInSettings(), 1);
}

TEST_F(SettingsStoreTest, WriteKeepsEverythingElse) {
  folder.Write(kFile, R"({"note": "by hand", "int32": {"isReport": 1, "rpttm_ui": 5},
                          "int64": {"rpttm_li": 7, "rpttm_ui": 8}})");
  ASSERT_NE(Open()->WriteInt64("rpttm_ui", -9), 0);
  const JsonOwner written(json_loads(Content().value_or("").c_str(), 0, nullptr));
  const JsonOwner expected(json_loads(
      R"({"note": "by hand", "int32": {"isReport": 1, "rpttm_ui": 5},
          "int64": {"rpttm_li": 7, "rpttm_ui": -9}})",
      0, nullptr));
  EXPECT_TRUE(json_equal(written.Get(), expected.Get()));
}

TEST_F(SettingsStoreTest, DamagedFileGivesNoStoreAndStays) {
  for (const std::string damage :
       {"", "{", "[]", "7", "{\"int32\": 1}", "{\"int64\": []}", R"({"int32": {"a": "1"}})",
        R"({"int32": {"a": 2147483648}})", R"({"int32": {"a": -2147483649}})",
        R"({"int64": {"a": 9223372036854775808}})", R"({"int64": {"a": 1.0}})",
        R"({"int64": {"a": null}})", R"({"int64": {"a": 1, "a": 2}})", "{} {}",
        "{\"a\": \"\xff\"}"}) {
    folder.Write(kFile, damage);
    EXPECT_FALSE(Open()) << damage;
    EXPECT_THAT(Content(), Optional(damage));
  }
}

TEST_F(SettingsStoreTest, ChangeByHandCountsAtOnceAndDamageIsKept) {
  const auto store = Open();
  folder.Write(kFile, R"({"int64": {"rpttm_ui": 3}})");
  EXPECT_THAT(Int64(store, "rpttm_ui"), Optional(3));
  folder.Write(kFile, "damage");
  EXPECT_EQ(Int64(store, "rpttm_ui"), std::nullopt);
  EXPECT_EQ(store->WriteInt64("rpttm_ui", 2), 0);
  EXPECT_THAT(Content(), Optional(std::string("damage")));
}

TEST_F(SettingsStoreTest, FailedReplacementKeepsTheOldFile) {
  folder.Write(kFile, R"({"int64": {"rpttm_ui": 1}})");
  const auto store = Open();
  const FileHandle noDeleting(CreateFileW((folder.Path() / kFile).c_str(), GENERIC_READ,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                          OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(noDeleting);
  EXPECT_EQ(store->WriteInt64("rpttm_ui", 2), 0);
  EXPECT_THAT(Content(), Optional(std::string(R"({"int64": {"rpttm_ui": 1}})")));
  EXPECT_EQ(FilesInSettings(), 1);
}

TEST_F(SettingsStoreTest, DataPathMustExistAndFeatureNameStaysInIt) {
  folder.Write("secret.json", "{}");
  for (const char* name : {"", "..\\secret", "../secret", "a.b", "c:", "\xc3\xa4"}) {
    EXPECT_FALSE(PolicyDb(LoadPolicyDb()).OpenSettingsStore(name)) << name;
  }
  SetDataPath(folder.Path().wstring() + L"\\");
  EXPECT_TRUE(Open());
  for (const auto& path :
       {folder.Path() / "missing", folder.Path() / "secret.json", std::filesystem::path()}) {
    SetDataPath(path.wstring());
    EXPECT_FALSE(Open()) << path;
  }
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velmora");
  EXPECT_FALSE(Open());
}

class PolicyDocumentTest : public testing::Test {
 protected:
  static PolicyDocumentOwner OpenDocument(int32_t document, const char* path) {
    return PolicyDb(LoadPolicyDb()).OpenDocument(document, path);
  }

  const TestFolder folder;
  const std::string dataPath = folder.Utf8("");
};

// The program's copy of jansson finds a key in an object that the library's code has made.
TEST_F(PolicyDocumentTest, EveryValueIsAReferenceOfItsOwn) {
  folder.Write("documents/25.json", R"({"name": "sample", "id": 4711})");
  auto document = OpenDocument(25, dataPath.c_str());
  ASSERT_TRUE(document);
  const JsonOwner first(document->Json());
  const JsonOwner second(document->Json());
  EXPECT_EQ(document->Query(first.Get()), nullptr);
  document.Reset();
  ASSERT_EQ(first.Get(), second.Get());
  EXPECT_EQ(first->refcount, 2U);
  EXPECT_EQ(json_integer_value(json_object_get(first.Get(), "id")), 4711);
}

TEST_F(PolicyDocumentTest, MissingOrDamagedIsNone) {
  EXPECT_FALSE(OpenDocument(25, dataPath.c_str()));
  for (const char* damage : {"", "{\"id\": ", "4711", "{\"id\": 1, \"id\": 2}"}) {
    folder.Write("documents/25.json", damage);
    EXPECT_FALSE(OpenDocument(25, dataPath.c_str())) << damage;
  }
  folder.Write("documents/25.json", "{}");
  EXPECT_TRUE(OpenDocument(25, dataPath.c_str()));
  EXPECT_FALSE(OpenDocument(-25, dataPath.c_str()));
  for (const char* wrongPath : {"", "C:\\missing folder", "\xff"}) {
    EXPECT_FALSE(OpenDocument(25, wrongPath)) << wrongPath;
  }
}

constexpr char kAllOldestFirst[] = R"({"c": [], "o": [{"n": "ts", "t": "ASC"}]})";

TEST_F(PolicyDocumentTest, RecordStoreAnswersQueries) {
  const JsonOwner descriptor(json_loads(kAllOldestFirst, 0, nullptr));
  const auto found = [&](int32_t document) {
    const auto store = OpenDocument(document, dataPath.c_str());
    return JsonOwner(store ? store->Query(descriptor.Get()) : nullptr);
  };
  EXPECT_TRUE(json_is_array(found(0).Get()));
  EXPECT_EQ(json_array_size(found(0).Get()), 0U);
  folder.Write("records.json", R"([{"ts": 2}, {"ts": 1}])");
  const JsonOwner expected(json_loads(R"([{"ts": 1}, {"ts": 2}])", 0, nullptr));
  EXPECT_TRUE(json_equal(found(0).Get(), expected.Get()));
  folder.Write("documents/1.json", R"([{"ts": 2}, {"ts": 1}])");
  EXPECT_FALSE(found(1));
  const auto store = OpenDocument(0, dataPath.c_str());
  ASSERT_TRUE(store);
  EXPECT_EQ(store->Query(nullptr), nullptr);
}

TEST_F(PolicyDocumentTest, DamagedRecordStoreIsNone) {
  folder.Write("documents/0.json", "[]");
  for (const char* damage : {"", "[", "{}", "[{}, 1]", "[[]]", "[{\"ts\": 1, \"ts\": 2}]"}) {
    folder.Write("records.json", damage);
    EXPECT_FALSE(OpenDocument(0, dataPath.c_str())) << damage;
  }
}

}  // namespace
}  // namespace ostrell
