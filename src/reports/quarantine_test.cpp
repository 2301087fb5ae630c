#include "reports/quarantine.h"

#include <gtest/gtest.h>

#include "tests/support/fake_machine.h"

namespace ostrell {
namespace {

JsonOwner Load(const char* text) {
  return JsonOwner(json_loads(text, 0, nullptr));
}

TEST(QuarantineEntry, IsWantedByKindAndName) {
  const JsonOwner patterns = Load(R"(["", 7, "harmless", "test/*"])");
  const QuarantineInstructions instructions{.maxFiles = 1, .barred = patterns.Get()};
  const auto isWanted = [&](uint32_t kind, const char* name) {
    return IsWanted({0, kind, "", "", name, 0}, instructions);
  };
  for (uint32_t kind = 0; kind < 100; ++kind) {
    EXPECT_EQ(isWanted(kind, "Trojan/X"), kind == 1 || kind == 3 || kind == 4 || kind == 46)
        << kind;
  }
  EXPECT_FALSE(isWanted(1, "TEST/Harmless"));
  EXPECT_FALSE(isWanted(1, "Harmless"));
  EXPECT_TRUE(isWanted(1, "Harmless.B"));
  EXPECT_TRUE(isWanted(1, ""));
  EXPECT_FALSE(MatchesAnyPattern("a", Load(R"({"a": "*"})").Get()));
}

TEST(QuarantinePass, IsTriedAgainWhenTheTimeIsSpent) {
  const struct {
    int entries;
    int32_t maxFiles;
    int32_t result;
  } cases[] = {
      {5, 9, 0},  // the third begins at 900 seconds sharp
      {3, 9, 1},  // it was the last one
      {5, 3, 1},  // the server wants no more
  };
  for (const auto& [count, maxFiles, result] : cases) {
    const JsonOwner entries(json_array());
    for (int i = 0; i < count; ++i) {
      json_array_append_new(
          entries.Get(),
          Load(R"({"id": 1, "fid": 3, "sha1": "", "fn": "", "vn": "", "ts": 1})").Release());
    }
    FakeClock clock(5000);
    int sent = 0;
    const auto send = [&](const QuarantineEntry&) {
      ++sent;
      clock.now += 450;
      return true;
    };
    EXPECT_EQ(RunQuarantinePass(entries, 0, {maxFiles, nullptr}, send, clock), result);
    EXPECT_EQ(sent, 3);
  }
}

}  // namespace
}  // namespace ostrell
