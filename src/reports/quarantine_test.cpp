#include "reports/quarantine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/fake_machine.h"

namespace ostrell {
namespace {

JsonOwner Load(const std::string& text) {
  return JsonOwner(json_loads(text.c_str(), 0, nullptr));
}

TEST(QuarantineInstructions, NeedACount) {
  const struct {
    const char* answer;
    int32_t maxFiles;  // -1: none
    bool hasPatterns;
  } cases[] = {
      {R"({"samples": {"quarantine": {"cnt": 3, "vnflt": ["a"]}}})", 3, true},
      {R"({"samples": {"quarantine": {"cnt": 0}}})", 0, false},
      {R"({"samples": {"quarantine": {"vnflt": []}}})", -1, false},
      {R"({"samples": {"quarantine": {"cnt": "3"}}})", -1, false},
      {R"({"samples": [{"cnt": 3}]})", -1, false},
      {R"([])", -1, false},
  };
  for (const auto& [text, maxFiles, hasPatterns] : cases) {
    const JsonOwner answer = Load(text);
    const auto read = ReadQuarantineInstructions(answer.Get());
    ASSERT_EQ(read.has_value(), maxFiles >= 0) << text;
    if (read) {
      EXPECT_EQ(read->maxFiles, maxFiles) << text;
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
  const QuarantineInstructions instructions{.maxFiles = 1, .barred = patterns.Get()};
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

// Entries of the kind 3 with these numbers, each reported at the second of its number.
JsonOwner Entries(const std::vector<int>& ids) {
  JsonOwner entries(json_array());
  for (const int id : ids) {
    json_array_append_new(
        entries.Get(), json_pack("{s:i, s:i, s:s, s:s, s:s, s:i}", "id", id, "fid", 3, "sha1", "",
                                 "fn", "", "vn", "", "ts", id));
  }
  return entries;
}

TEST(QuarantinePass, TakesWhatIsWantedUpToTheCount) {
  const JsonOwner barred = Load(R"(["barred"])");
  const struct {
    int32_t maxFiles;
    std::vector<int64_t> asked;
  } cases[] = {{-1, {}}, {0, {}}, {1, {10, 12}}, {2, {10, 12, 13}}, {9, {10, 12, 13, 14}}};
  for (const auto& [maxFiles, expected] : cases) {
    const JsonOwner entries = Entries({9, 10, 11, 12, 13, 14});
    json_array_insert_new(entries.Get(), 0, json_integer(1));
    json_object_set_new(json_array_get(entries.Get(), 3), "vn", json_string("Barred"));
    std::vector<int64_t> asked;
    const auto send = [&](const QuarantineEntry& entry) {
      asked.push_back(entry.id);
      return entry.id != 10;  // known to the server, or not to be had
    };
    EXPECT_EQ(RunQuarantinePass(entries, 10, {maxFiles, barred.Get()}, send, FakeClock(0)), 1);
    EXPECT_EQ(asked, expected) << maxFiles;
  }
  const auto never = [](const QuarantineEntry&) { return ADD_FAILURE(), false; };
  EXPECT_EQ(RunQuarantinePass(Entries({}), 0, {1, nullptr}, never, FakeClock(0)), 1);
}

TEST(QuarantinePass, IsTriedAgainWhenTheTimeIsSpent) {
  const struct {
    std::vector<int> ids;
    int32_t maxFiles;
    size_t sent;
    int32_t result;
  } cases[] = {
      {{1, 2, 3, 4, 5}, 9, 3, 0},  // the third begins at 900 seconds sharp
      {{1, 2, 3}, 9, 3, 1},        // it was the last one
      {{1, 2, 3, 4, 5}, 3, 3, 1},  // the server wants no more
  };
  for (const auto& [ids, maxFiles, expected, result] : cases) {
    FakeClock clock(5000);
    size_t sent = 0;
    const auto send = [&](const QuarantineEntry&) {
      ++sent;
      clock.now += 450;
      return true;
    };
    EXPECT_EQ(RunQuarantinePass(Entries(ids), 0, {maxFiles, nullptr}, send, clock), result);
    EXPECT_EQ(sent, expected);
  }
}

}  // namespace
}  // namespace ostrell
