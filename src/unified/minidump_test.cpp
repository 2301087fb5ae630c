#include "unified/minidump.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "base/print.h"
#include "tests/support/dump_bytes.h"
#include "tests/support/expect_recorded.h"

namespace ostrell {
namespace {

std::string Text(const DumpReading& reading) {
  constexpr const char* kKinds[] = {"foreign", "no module list", "modules"};
  const auto& time = reading.crashModuleTime;
  return kKinds[static_cast<size_t>(reading.kind)] + (time ? Print(" 0x%08x", *time) : "");
}

TEST(Minidump, RecordedCases) {
  ExpectRecorded("minidump", [](const std::string& dump, const auto&) {
    return Text(ReadMinidump(SourceOf(std::as_bytes(std::span(dump)))));
  });
}

TEST(Minidump, CutAnywhere) {
  const DumpBytes whole = WellFormedDump();
  for (size_t size = 0; size < whole.bytes.size(); ++size) {
    const DumpReading reading = ReadMinidump(SourceOf(std::span(whole.bytes).first(size)));
    EXPECT_EQ(Text(reading), size < 4     ? "foreign"
                             : size < 204 ? "no module list"
                                          : "modules")
        << size;
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

TEST(Minidump, WhatLimitsLeaveOut) {
  const auto streams = [](size_t count) {
    DumpBytes dump;
    return dump.Header(count, 16).Stream(16 + (count - 1) * 12, 4, 0);
  };
  const auto oneName = [](const std::string& name) {
    DumpBytes dump;
    return dump.Header(1, 16).Stream(16, 4, 28).Put32(28, 1).Module(32, 7, 140).Name(140, name);
  };
  const std::string longest(32768, 'a');  // 64 KiB, without the zero at its end
  const std::string before = longest.substr(4);
  const std::string shared(2048, 'a');  // 4 KiB
  const struct {
    const char* what;
    DumpBytes dump;
    const char* reading;
    DumpLeftOut leftOut;
  } cases[] = {
      {"as many modules", DumpWithSharedName(16384, "a"), "modules 0x00000007", {}},
      {"one module more", DumpWithSharedName(16385, "a"), "modules", {.modules = 1}},
      {"a longest name", oneName(before + ".exe"), "modules 0x00000007", {}},
      {"a longest name without the suffix", oneName(longest), "modules", {}},
      {"a longer name", oneName(before + "a.exe"), "modules", {.names = 1}},
      {"a name of several pages, shared",
       DumpWithSharedName(1000, std::string(4000, 'a')),
       "modules 0x00000007",
       {}},
      {"as many bytes of names", DumpWithSharedName(4096, shared), "modules 0x00000007", {}},
      {"one name more", DumpWithSharedName(4099, shared), "modules", {.modules = 3}},
      {"as many streams", streams(65536), "modules", {}},
      {"more streams", streams(65540), "no module list", {.streams = 4}},
  };
  for (const auto& c : cases) {
    const DumpReading reading = ReadMinidump(SourceOf(c.dump.bytes));
    EXPECT_EQ(Text(reading), c.reading) << c.what;
    EXPECT_EQ(reading.leftOut, c.leftOut) << c.what;
  }
}

// A dump of 60 GiB, made up by its source: names as far as one can see, `apart` from each other.
// 64 KiB of a name and its length lie in seventeen pages, and the list's page is read again behind
// them: 18 pages a name, or 17 where the last one is the first of the next name.
TEST(Minidump, WorkIsBoundedWhateverTheSize) {
  constexpr uint64_t kSize = uint64_t{60} << 30;
  for (const auto& [apart, pages] : {std::pair<size_t, uint64_t>(100000, 18), {65540, 17}}) {
    DumpBytes head;
    head.Header(1, 16).Stream(16, 4, 28).Put32(28, 0xFFFFFFFF);
    for (size_t i = 0; i < 200; ++i) {  // more than are looked at
      head.Module(32 + i * 108, 1, (size_t{4} << 20) + i * apart);
    }
    head.bytes.resize(8 * kPage);
    uint64_t copied = 0;
    const auto reading =
        ReadMinidump({kSize, [&](uint64_t offset, std::span<std::byte> to) {
                        copied += to.size();
                        std::ranges::fill(to, std::byte{'a'});
                        if (offset < head.bytes.size()) {
                          std::ranges::copy(*Slice(head.bytes, offset, to.size()), to.begin());
                        }
                        return true;
                      }});
    const uint64_t names = 2048 / pages + 1;
    EXPECT_EQ(Text(reading), "modules");
    EXPECT_EQ(reading.leftOut.names, names);
    EXPECT_EQ(reading.leftOut.modules, (kSize - 32) / 108 - names);
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
  EXPECT_EQ(Text(whole.reading), "modules 0x12345678");
  EXPECT_THAT(std::set(whole.pages.begin(), whole.pages.end()),
              testing::ElementsAre(0, 2, 3, 6, 7, 8, 9, 10, 11));
}

// What a failing disk or a cut connection gives, at any page.
TEST(Minidump, UnreadablePageEndsTheReading) {
  const DumpBytes dump = WideDump();
  for (uint64_t page = 0; page < 12; ++page) {
    const PageReading cut = ReadPages(dump, page * kPage);
    EXPECT_EQ(Text(cut.reading), "no module list") << page;
    EXPECT_GE(cut.pages.back(), page);
    EXPECT_EQ(std::ranges::count_if(cut.pages, [page](uint64_t read) { return read >= page; }), 1)
        << "once a page has failed none is asked for: " << page;
  }
}

}  // namespace
}  // namespace ostrell
