#include "unified/minidump.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "unified/dump_bytes.h"

namespace ostrell {
namespace {

using testing::Optional;

TEST(Minidump, FindsTheFirstExecutable) {
  const DumpReading reading = WellFormedDump().Read();
  EXPECT_EQ(reading.kind, DumpKind::kModules);
  EXPECT_THAT(reading.crashModuleTime, Optional(0x90ABCDEFu));
}

TEST(Minidump, NamesAreSearchedForTheSuffix) {
  const std::pair<const char*, bool> cases[] = {
      {"app.exe.local", true}, {"x.exe\\lib.dll", true}, {"a..exe", true}, {"a.e.exe", true},
      {"APP.EXE", false},      {"a.ex", false},          {"", false}};
  for (const auto& [name, isMatch] : cases) {
    DumpBytes dump;
    dump.Header(1, 16).Stream(16, 4, 28).Put32(28, 1).Module(32, 7, 140).Name(140, name);
    const DumpReading reading = dump.Read();
    EXPECT_EQ(reading.kind, DumpKind::kModules) << name;
    EXPECT_EQ(reading.crashModuleTime.has_value(), isMatch) << name;
  }
}

TEST(Minidump, OnlyTheFirstModuleListCounts) {
  DumpBytes dump;
  dump.Header(2, 16).Stream(16, 4, 40).Stream(28, 4, 44).Put32(40, 0).Put32(44, 1);
  dump.Module(48, 7, 156).Name(156, "a.exe");
  EXPECT_EQ(dump.Read().kind, DumpKind::kModules);
  EXPECT_EQ(dump.Read().crashModuleTime, std::nullopt);
}

struct Damage {
  const char* what;
  DumpBytes dump;
  DumpKind kind;
  std::optional<uint32_t> time;
};

TEST(Minidump, Damaged) {
  const std::optional<uint32_t> found = 0x90ABCDEF;
  const Damage cases[] = {
      {"empty", {}, DumpKind::kForeign, {}},
      {"other signature", WellFormedDump().Put32(0, 0x504D444E), DumpKind::kForeign, {}},
      {"no streams", WellFormedDump().Put32(8, 0), DumpKind::kNoModuleList, {}},
      {"4 billion streams", WellFormedDump().Put32(8, 0xFFFFFFFF), DumpKind::kNoModuleList, {}},
      {"directory past the end", WellFormedDump().Put32(12, 421), DumpKind::kNoModuleList, {}},
      {"directory at the top", WellFormedDump().Put32(12, 0xFFFFFFFF), DumpKind::kNoModuleList, {}},
      {"no module list", WellFormedDump().Put32(56, 3), DumpKind::kNoModuleList, {}},
      {"list past the end", WellFormedDump().Put32(64, 417), DumpKind::kNoModuleList, {}},
      {"list begins with the last bytes",
       WellFormedDump().Put32(420, 99).Put32(64, 420),
       DumpKind::kModules,
       {}},
      {"no modules", WellFormedDump().Put32(200, 0), DumpKind::kModules, {}},
      {"4 billion modules", WellFormedDump().Put32(200, 0xFFFFFFFF), DumpKind::kModules, found},
      {"4 billion modules, none a program",
       WellFormedDump().Put32(200, 0xFFFFFFFF).Put32(332, 70),
       DumpKind::kModules,
       {}},
      {"name past the end", WellFormedDump().Put32(204 + 20, 0xFFFFFFF0), DumpKind::kModules,
       found},
      {"name without RVA", WellFormedDump().Put32(312 + 20, 0), DumpKind::kModules, {}},
      {"name of 4 billion bytes", WellFormedDump().Put32(130, 0xFFFFFFFF), DumpKind::kModules,
       found},
      {"name shorter than its text", WellFormedDump().Put32(130, 8), DumpKind::kModules, {}},
      {"name of odd length", WellFormedDump().Put32(130, 33), DumpKind::kModules, {}},
      {"name without terminator",
       WellFormedDump().Put32(316, 0).Put32(312 + 20, 418).Put32(416, 0),
       DumpKind::kModules,
       {}},
  };
  for (const Damage& c : cases) {
    const DumpReading reading = c.dump.Read();
    EXPECT_EQ(reading.kind, c.kind) << c.what;
    EXPECT_EQ(reading.crashModuleTime, c.time) << c.what;
  }
}

TEST(Minidump, CutAnywhere) {
  const DumpBytes whole = WellFormedDump();
  for (size_t size = 0; size <= whole.bytes.size(); ++size) {
    DumpBytes cut;
    cut.bytes.assign(whole.bytes.begin(), whole.bytes.begin() + static_cast<ptrdiff_t>(size));
    const DumpReading reading = cut.Read();
    const DumpKind expected = size < 4     ? DumpKind::kForeign
                              : size < 204 ? DumpKind::kNoModuleList
                                           : DumpKind::kModules;
    EXPECT_EQ(reading.kind, expected) << size;
    EXPECT_EQ(reading.crashModuleTime.has_value(), size == whole.bytes.size()) << size;
  }
}

// All names but the last are the same long one: examined each time they would cost the square.
TEST(Minidump, OverlappingNamesEndTheList) {
  constexpr size_t kModules = 1000;
  constexpr size_t kLongName = 32 + kModules * 108;
  DumpBytes dump;
  dump.Header(1, 16).Stream(16, 4, 28).Put32(28, kModules).Name(kLongName, std::string(4000, 'a'));
  const size_t program = dump.bytes.size();
  dump.Name(program, "a.exe").Module(32 + (kModules - 1) * 108, 7, program);
  EXPECT_THAT(dump.Read().crashModuleTime, Optional(7u));
  for (size_t i = 0; i + 1 < kModules; ++i) {
    dump.Module(32 + i * 108, 1, kLongName);
  }
  EXPECT_EQ(dump.Read().kind, DumpKind::kModules);
  EXPECT_EQ(dump.Read().crashModuleTime, std::nullopt);
}

}  // namespace
}  // namespace ostrell
