#include "unified/minidump.h"

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
  const auto& [streams, modules, names] = reading.leftOut;
  const std::string leftOut =
      Print(", without %u streams, %u modules, %u names", streams, modules, names);
  return kKinds[static_cast<size_t>(reading.kind)] + (time ? Print(" 0x%08x", *time) : "") +
         (reading.leftOut == DumpLeftOut() ? "" : leftOut);
}

TEST(Minidump, RecordedCases) {
  ExpectRecorded("minidump", [](const std::string& dump, const auto&) {
    return Text(ReadMinidump(SourceOf(dump)));
  });
}

TEST(Minidump, RecordedLimits) {
  ExpectRecorded("minidump_limits", [](const std::string& text, const auto&) {
    const std::string dump = DumpOf(text);
    return Text(ReadMinidump(SourceOf(dump)));
  });
}

constexpr uint64_t kPage = 4096;

// A dump of 60 GiB, made up by its source: names as far as one can see, `apart` from each other.
// 64 KiB of a name and its length lie in seventeen pages, and the list's page is read again behind
// them: 18 pages a name, or 17 where the last one is the first of the next name.
TEST(Minidump, WorkIsBoundedWhateverTheSize) {
  constexpr uint64_t kSize = uint64_t{60} << 30;
  for (const auto& [apart, pages] : {std::pair<size_t, uint64_t>(100000, 18), {65540, 17}}) {
    std::string head =
        DumpOf(Print("words 0 0x504D444D 0 1 16 4 0 28 0xFFFFFFFF\n"
                     "modules 32 200 1 4194304 %u\n",  // more than are looked at
                     apart));
    head.resize(8 * kPage);
    uint64_t copied = 0;
    const auto reading =
        ReadMinidump({kSize, [&](uint64_t offset, std::span<std::byte> to) {
                        copied += to.size();
                        std::ranges::fill(to, std::byte{'a'});
                        return offset >= head.size() || SourceOf(head).copy(offset, to);
                      }});
    const uint64_t names = 512 / pages + 1;
    EXPECT_EQ(reading.kind, DumpKind::kModules);
    EXPECT_EQ(reading.crashModuleTime, std::nullopt);
    EXPECT_EQ(reading.leftOut,
              (DumpLeftOut{.modules = (kSize - 32) / 108 - names, .names = names}));
    EXPECT_LE(copied, (1 + 512 + 18) * kPage);
  }
}

// Header, directory, list and names stand in pages of their own, one page between each two; a field
// of each stands across the border of two pages. The last page is a part of one. A page that cannot
// be read is what a failing disk or a cut connection gives.
TEST(Minidump, OnlyPagesOfUseAreReadAndNoneOnceOneHasFailed) {
  const std::string dump = DumpOf(
      "words 0 0x504D444D 0 2 12274\n"
      "words 12274 1 0 0 4 0 28646\n"
      "words 28646 2\n"
      "modules 28650 1 1 36857 0\n"
      "modules 28758 1 0x12345678 45053 0\n"
      "name 36857 0 C:\\a.dll\n"
      "name 45053 0 C:\\b.exe\n");
  for (uint64_t failing = 0; failing <= 12; ++failing) {  // pages from this one on
    std::vector<uint64_t> pages;
    const DumpReading reading =
        ReadMinidump({dump.size(), [&](uint64_t offset, std::span<std::byte> to) {
                        pages.push_back(offset / kPage);
                        return pages.back() < failing && SourceOf(dump).copy(offset, to);
                      }});
    EXPECT_EQ(Text(reading), failing < 12 ? "no module list" : "modules 0x12345678") << failing;
    EXPECT_EQ(std::ranges::count_if(pages, [&](uint64_t page) { return page >= failing; }),
              failing < 12 ? 1 : 0);
    EXPECT_TRUE(failing == 12 || pages.back() >= failing);
    const std::set used(pages.begin(), pages.end());
    EXPECT_TRUE(failing < 12 || used == std::set<uint64_t>({0, 2, 3, 6, 7, 8, 9, 10, 11}));
  }
}

}  // namespace
}  // namespace ostrell
