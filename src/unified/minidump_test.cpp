#include "unified/minidump.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tests/support/dump_bytes.h"

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

constexpr uint64_t kPage = 4096;

// `count` modules, the last one the program; the others share the name, written behind the list.
DumpBytes DumpWithSharedName(size_t count, std::string_view name) {
  const size_t nameAt = 32 + count * 108;
  DumpBytes dump;
  dump.Header(1, 16).Stream(16, 4, 28).Put32(28, count).Name(nameAt, name);
  for (size_t i = 0; i + 1 < count; ++i) {
    dump.Module(32 + i * 108, 1, nameAt);
  }
  const size_t program = dump.bytes.size();
  return dump.Name(program, "a.exe").Module(32 + (count - 1) * 108, 7, program);
}

TEST(Minidump, ModulesMayShareTheirName) {
  const DumpReading reading = DumpWithSharedName(1000, std::string(4000, 'a')).Read();
  EXPECT_THAT(reading.crashModuleTime, Optional(7u));
  EXPECT_EQ(reading.leftOut, DumpLeftOut());
}

// A name of 64 KiB, without the zero at its end.
const std::string kLongestName(32768, 'a');

TEST(Minidump, WhatLimitsLeaveOut) {
  const auto streams = [](size_t count) {
    DumpBytes dump;
    return dump.Header(count, 16).Stream(16 + (count - 1) * 12, 4, 0);
  };
  const auto oneName = [](const std::string& name) {
    DumpBytes dump;
    return dump.Header(1, 16).Stream(16, 4, 28).Put32(28, 1).Module(32, 7, 140).Name(140, name);
  };
  const std::string before(32768 - 4, 'a');
  const std::string shared(2048, 'a');  // 4 KiB
  const struct {
    const char* what;
    DumpBytes dump;
    bool isFound;
    DumpLeftOut leftOut;
  } cases[] = {
      {"as many modules", DumpWithSharedName(16384, "a"), true, {}},
      {"one module more", DumpWithSharedName(16385, "a"), false, {.modules = 1}},
      {"a longest name", oneName(before + ".exe"), true, {}},
      {"a longest name without the suffix", oneName(kLongestName), false, {}},
      {"a longer name", oneName(before + "a.exe"), false, {.names = 1}},
      {"as many bytes of names", DumpWithSharedName(4096, shared), true, {}},
      {"one name more", DumpWithSharedName(4099, shared), false, {.modules = 3}},
  };
  for (const auto& c : cases) {
    const DumpReading reading = c.dump.Read();
    EXPECT_EQ(reading.kind, DumpKind::kModules) << c.what;
    EXPECT_EQ(reading.crashModuleTime.has_value(), c.isFound) << c.what;
    EXPECT_EQ(reading.leftOut, c.leftOut) << c.what;
  }
  EXPECT_EQ(streams(65536).Read().kind, DumpKind::kModules);
  EXPECT_EQ(streams(65536).Read().leftOut, DumpLeftOut());
  const DumpReading longer = streams(65540).Read();
  EXPECT_EQ(longer.kind, DumpKind::kNoModuleList);
  EXPECT_EQ(longer.leftOut, DumpLeftOut{.streams = 4});
}

// A dump of 60 GiB, made up by its source: names as far as one can see, `apart` from each other.
struct HugeReading {
  DumpReading reading;
  uint64_t copied = 0;
};
HugeReading ReadHugeDump(size_t apart) {
  constexpr uint64_t kSize = uint64_t{60} << 30;
  DumpBytes head;
  head.Header(1, 16).Stream(16, 4, 28).Put32(28, 0xFFFFFFFF);
  for (size_t i = 0; i < 20000; ++i) {
    head.Module(32 + i * 108, 1, (size_t{4} << 20) + i * apart);
  }
  head.bytes.resize(size_t{4} << 20);
  HugeReading result;
  result.reading = ReadMinidump({kSize, [&](uint64_t offset, std::span<std::byte> to) {
                                   result.copied += to.size();
                                   if (offset < head.bytes.size()) {
                                     return SourceOf(head.bytes).copy(offset, to);
                                   }
                                   std::ranges::fill(to, std::byte{'a'});
                                   return true;
                                 }});
  return result;
}

// 64 KiB of a name and its length lie in seventeen pages, and the list's page is read again behind
// them: 18 pages a name, or 17 where the last one is the first of the next name.
TEST(Minidump, WorkIsBoundedWhateverTheSize) {
  for (const auto& [apart, pages] : {std::pair<size_t, uint64_t>(100000, 18), {65540, 17}}) {
    const uint64_t names = 2048 / pages + 1;
    const auto [reading, copied] = ReadHugeDump(apart);
    EXPECT_EQ(reading.kind, DumpKind::kModules);
    EXPECT_EQ(reading.leftOut.names, names);
    EXPECT_EQ(reading.leftOut.modules, ((uint64_t{60} << 30) - 32) / 108 - names);
    EXPECT_LE(copied, (1 + 2048 + 18) * kPage);
  }
}

// The pages that a reading copies, of a dump of which all but those up to `readable` fail.
struct PageReading {
  DumpReading reading;
  std::vector<uint64_t> pages;
};
PageReading ReadPages(const DumpBytes& dump, uint64_t readable) {
  PageReading result;
  DumpSource source = SourceOf(dump.bytes);
  source.copy = [&, copy = source.copy](uint64_t offset, std::span<std::byte> to) {
    result.pages.push_back(offset / kPage);
    return offset + to.size() <= readable && copy(offset, to);
  };
  result.reading = ReadMinidump(source);
  return result;
}

// Header, directory, list and names in pages of their own, one page between each two; a field of
// each stands across the border of two pages. The last page is a part of one.
DumpBytes WideDump() {
  DumpBytes dump;
  const uint64_t list = 7 * kPage - 26;
  dump.Header(2, 3 * kPage - 14).Stream(3 * kPage - 14, 1, 0).Stream(3 * kPage - 2, 4, list);
  dump.Put32(list, 2).Module(list + 4, 1, 9 * kPage - 7);
  dump.Module(list + 112, 0x12345678, 11 * kPage - 3);
  return dump.Name(9 * kPage - 7, "C:\\a.dll").Name(11 * kPage - 3, "C:\\b.exe");
}

TEST(Minidump, OnlyPagesOfUseAreRead) {
  const DumpBytes dump = WideDump();
  const PageReading whole = ReadPages(dump, dump.bytes.size());
  EXPECT_THAT(whole.reading.crashModuleTime, Optional(0x12345678u));
  EXPECT_THAT(std::set(whole.pages.begin(), whole.pages.end()),
              testing::ElementsAre(0, 2, 3, 6, 7, 8, 9, 10, 11));
}

// What a failing disk or a cut connection gives, at any page.
TEST(Minidump, UnreadablePageEndsTheReading) {
  const DumpBytes dump = WideDump();
  for (uint64_t page = 0; page < 12; ++page) {
    const PageReading cut = ReadPages(dump, page * kPage);
    EXPECT_EQ(cut.reading.kind, DumpKind::kNoModuleList) << page;
    EXPECT_EQ(cut.reading.crashModuleTime, std::nullopt) << page;
    EXPECT_GE(cut.pages.back(), page);
    EXPECT_EQ(std::ranges::count_if(cut.pages, [page](uint64_t read) { return read >= page; }), 1)
        << "once a page has failed none is asked for: " << page;
  }
}

}  // namespace
}  // namespace ostrell
