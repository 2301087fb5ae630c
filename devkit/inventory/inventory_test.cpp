#include "devkit/inventory/inventory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace ostrell {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Texts = std::vector<std::string>;

JsonOwner LoadFile(const std::string& file) {
  return JsonOwner(json_load_file(file.c_str(), 0, nullptr));
}

JsonOwner Load(const std::string& text) {
  return JsonOwner(json_loads(text.c_str(), JSON_DECODE_ANY, nullptr));
}

const Inventory& Own() {
  static const Inventory inventory = [] {
    std::string why;
    auto parsed = Inventory::Parse(CompactText(LoadFile(OSTRELL_INVENTORY)), &why);
    EXPECT_TRUE(parsed) << why;
    return std::move(parsed).value();
  }();
  return inventory;
}

struct Walked {
  Texts all;
  Texts open;     // what an open entry covers
  Texts lacking;  // what has no entry

  void Take(std::string_view place, const InventoryEntry* entry) {
    all.emplace_back(place);
    if (entry == nullptr || entry->isOpen) {
      (entry == nullptr ? lacking : open).emplace_back(place);
    }
  }
};

Walked WalkOf(const std::string& report, const JsonOwner& body) {
  Walked walked;
  WalkBody(Own(), report, body.Get(),
           [&](auto pointer, auto, auto entry) { walked.Take(pointer, entry); });
  return walked;
}

// "rc3_question": an array is a body, an object the query of that request.
Walked WalkCase(const std::string& name, const char* kind) {
  const std::string report = name.substr(0, 3);
  const JsonOwner document = LoadFile(OSTRELL_INVENTORY_CASES "/" + name + kind);
  if (!json_is_object(document.Get())) {
    return WalkOf(report, document);
  }
  Walked walked;
  const char* key = nullptr;
  json_t* value = nullptr;
  json_object_foreach(document.Get(), key, value) {
    walked.Take(std::string("?") + key, Own().OfQuery(report, name.substr(4), key));
  }
  return walked;
}

// A failing case has one key more than the passing one, and that has no entry. Where an open entry
// covers what has none nothing can fail.
TEST(Inventory, RecordedCases) {
  int pairs = 0;
  for (const auto& file : std::filesystem::directory_iterator(OSTRELL_INVENTORY_CASES)) {
    const std::string name = file.path().stem().stem();
    const Walked pass = WalkCase(name, ".pass.json");
    EXPECT_THAT(pass.lacking, IsEmpty()) << name;
    EXPECT_GT(pass.all.size(), 2u) << name;
    if (pass.open.empty()) {
      const Walked fail = WalkCase(name, ".fail.json");
      Texts added = fail.all;
      std::erase_if(added, [&](const auto& key) { return std::ranges::count(pass.all, key) > 0; });
      EXPECT_EQ(fail.lacking.size(), 1u) << name;
      EXPECT_EQ(fail.lacking, added) << name;
      ++pairs;
    }
  }
  EXPECT_GE(pairs, 2 * 8);  // each is met by both of its files
}

TEST(Inventory, OpenEntriesCoverWhatHasNoneOfItsOwn) {
  EXPECT_THAT(WalkCase("rc2_records", ".pass.json").open,
              ElementsAre("/0/processes/master/cmdline", "/0/processes/slave",
                          "/0/processes/slave/pathname", "/0/cmdline"));
  EXPECT_THAT(
      WalkCase("rc5_entries", ".pass.json").open,
      ElementsAre("/0/count", "/1/action", "/1/action/0", "/1/action/1", "/1/action/1/app"));
  EXPECT_EQ(Own().OfBody("rc2", "1", "/*/processes/slave/pathname"),
            Own().OfBody("rc2", "1", "/*/*"));
  EXPECT_TRUE(Own().OfHeader("rc7", "upload", "X-Any")->isOpen);
}

TEST(Inventory, EntryOfTheKindGoesBeforeThatOfAll) {
  const auto entry = [](const char* kind, const char* path) {
    return Own().OfBody("rc7", kind, path);
  };
  EXPECT_EQ(TextMember(entry("log_stats", "/*/pattern")->row, "type"), "text");
  EXPECT_EQ(TextMember(entry("syslog", "/*/pattern")->row, "type"), "integer");
  EXPECT_EQ(entry("dmp_files", "/*/pattern"), nullptr);
  EXPECT_EQ(entry("dmp_files", "/*/u"), entry("", "/*/u"));
  EXPECT_EQ(entry("syslog", "/*/name/first"), nullptr);
  EXPECT_NE(entry("syslog", "/*/name"), entry("log_stats", "/*/name"));
  EXPECT_NE(Own().OfBody("rc4", "upload", "body"), nullptr);
  EXPECT_EQ(Own().OfBody("rc4", "ticket", "body"), nullptr);
  EXPECT_EQ(Own().OfHeader("rc7", "ticket", "Content-Length"), nullptr);
  EXPECT_EQ(Own().ItemKind("rc2", Load(R"({"fid": 46})").Get()), "46");
  EXPECT_EQ(Own().ItemKind("rc7", Load(R"({"report_type": "syslog"})").Get()), "syslog");
  EXPECT_EQ(Own().ItemKind("rc5", Load(R"({"fid": 46})").Get()), "");
}

TEST(Inventory, BodiesOfOtherForms) {
  EXPECT_THAT(WalkOf("rc7", Load(R"([7, ["a"], {"name/~": {}}])")).lacking,
              ElementsAre("/0", "/1/0", "/2/name~1~0"));
  EXPECT_THAT(WalkOf("rc7", Load(R"({"u": 1})")).lacking, ElementsAre("/u"));
  EXPECT_THAT(WalkOf("rc9", Load(R"("text")")).lacking, ElementsAre(""));
  EXPECT_THAT(WalkOf("rc7", {}).all, IsEmpty());
}

TEST(Inventory, RefusesWhatIsNone) {
  const auto refusal = [](const std::string& entries) {
    std::string why;
    EXPECT_FALSE(Inventory::Parse(R"({"entries": [)" + entries + "]}", &why));
    return why;
  };
  const std::string u = R"({"report": "rc1", "path": "?u"})";
  const std::string x = R"({"report": "rc1", "path": "/*/u", "kind": {"of": "/*/x", "is": "1"}})";
  const std::string y = R"({"report": "rc1", "path": "/*/u", "kind": {"of": "/*/y", "is": "1"}})";
  EXPECT_THAT(refusal("\n}"), HasSubstr("line 2"));
  EXPECT_EQ(refusal(""), "no entries");
  EXPECT_THAT(refusal(R"({"path": "?u"})"), HasSubstr("no report or no path"));
  EXPECT_THAT(refusal(u + "," + u), HasSubstr("two entries of one value: rc1 ?u"));
  EXPECT_THAT(refusal(R"({"report": "rc2", "path": "/*/*"})"), HasSubstr("open"));
  EXPECT_THAT(refusal(R"({"report": "rc2", "path": "/*/a", "open": true})"), HasSubstr("open"));
  EXPECT_THAT(refusal(x + "," + y), HasSubstr("several members"));
}

}  // namespace
}  // namespace ostrell
