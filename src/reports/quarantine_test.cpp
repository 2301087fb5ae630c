#include "reports/quarantine.h"

#include <gtest/gtest.h>

#include <string>

namespace ostrell {
namespace {

JsonOwner Load(const std::string& text) {
  return JsonOwner(json_loads(text.c_str(), 0, nullptr));
}

TEST(QuarantineInstructions, NeedACount) {
  const struct {
    const char* answer;
    int32_t mostFiles;  // -1: none
    bool hasPatterns;
  } cases[] = {
      {R"({"samples": {"quarantine": {"cnt": 3, "vnflt": ["a"]}}})", 3, true},
      {R"({"samples": {"quarantine": {"cnt": 0}}})", 0, false},
      {R"({"samples": {"quarantine": {"vnflt": []}}})", -1, false},
      {R"({"samples": {"quarantine": {"cnt": "3"}}})", -1, false},
      {R"({"samples": [{"cnt": 3}]})", -1, false},
      {R"([])", -1, false},
  };
  for (const auto& [text, mostFiles, hasPatterns] : cases) {
    const JsonOwner answer = Load(text);
    const auto read = ReadQuarantineInstructions(answer.Get());
    ASSERT_EQ(read.has_value(), mostFiles >= 0) << text;
    if (read) {
      EXPECT_EQ(read->mostFiles, mostFiles) << text;
      EXPECT_EQ(read->barred != nullptr, hasPatterns) << text;
    }
  }
  EXPECT_FALSE(ReadQuarantineInstructions(nullptr));
}

constexpr char kEntry[] =
    R"({"id": 5000000000, "fid": -2147483602, "sha1": "AB", "fn": "C:\\x", "vn": "Trojan/X",
        "ts": 6000000000})";

TEST(QuarantineEntry, NeedsAllMembers) {
  const JsonOwner whole = Load(kEntry);
  const auto entry = ReadQuarantineEntry(whole.Get());
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->id, 5000000000);
  EXPECT_EQ(entry->kind, 46u);
  EXPECT_EQ(entry->sha1, "AB");
  EXPECT_EQ(entry->path, "C:\\x");
  EXPECT_EQ(entry->name, "Trojan/X");
  EXPECT_EQ(entry->time, 6000000000);
  for (const char* name : {"id", "fid", "sha1", "fn", "vn", "ts"}) {
    const JsonOwner damaged(json_copy(whole.Get()));
    json_object_set_new(damaged.Get(), name, json_real(1));
    EXPECT_FALSE(ReadQuarantineEntry(damaged.Get())) << name;
    json_object_del(damaged.Get(), name);
    EXPECT_FALSE(ReadQuarantineEntry(damaged.Get())) << name;
  }
  EXPECT_FALSE(ReadQuarantineEntry(nullptr));
}

TEST(QuarantineEntry, IsWantedByKindAndName) {
  const JsonOwner patterns = Load(R"(["", 7, "eicar", "test/*"])");
  const QuarantineInstructions instructions{.mostFiles = 1, .barred = patterns.Get()};
  const auto isWanted = [&](uint32_t kind, const char* name) {
    return IsWanted({0, kind, "", "", name, 0}, instructions);
  };
  for (uint32_t kind = 0; kind < 100; ++kind) {
    EXPECT_EQ(isWanted(kind, "Trojan/X"), kind == 1 || kind == 3 || kind == 4 || kind == 46)
        << kind;
  }
  EXPECT_FALSE(isWanted(1, "TEST/Eicar"));
  EXPECT_FALSE(isWanted(1, "Eicar"));
  EXPECT_TRUE(isWanted(1, "Eicar.B"));
  EXPECT_TRUE(isWanted(1, ""));
  EXPECT_FALSE(MatchesAnyPattern("a", Load(R"({"a": "*"})").Get()));
  EXPECT_FALSE(MatchesAnyPattern("a", nullptr));
}

}  // namespace
}  // namespace ostrell
