#include "unified/minidump.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string_view>

#include "base/bytes.h"

namespace ostrell {
namespace {

constexpr uint32_t kSignature = 0x504D444D;  // "MDMP"
constexpr uint32_t kModuleListStream = 4;
constexpr uint64_t kDirectoryEntrySize = 12;
constexpr uint64_t kModuleSize = 108;

constexpr size_t kPageSize = 4096;
constexpr size_t kNamePart = 256;

// The dump read page by page. The pages used last are kept, enough for a name and a module of the
// list, both across a border.
// What lies outside gives nothing, and so does everything once a page could not be read.
class PagedDump {
 public:
  explicit PagedDump(const DumpSource& from) : source(from) {}

  uint64_t Size() const { return source.size; }
  bool HasFailed() const { return hasFailed; }
  uint64_t PagesCopied() const { return pagesCopied; }

  bool Copy(uint64_t offset, std::span<std::byte> to) {
    if (offset > Size() || to.size() > Size() - offset) {
      return false;
    }
    while (!to.empty()) {
      const Page* const page = Load(offset / kPageSize);
      if (page == nullptr) {
        return false;
      }
      const auto within = static_cast<size_t>(offset % kPageSize);
      const size_t length = std::min(to.size(), kPageSize - within);
      std::memcpy(to.data(), page->bytes.data() + within, length);
      to = to.subspan(length);
      offset += length;
    }
    return true;
  }

  std::optional<uint32_t> Read32(uint64_t offset) {
    std::array<std::byte, sizeof(uint32_t)> field;
    return Copy(offset, field) ? ReadLittleEndian<uint32_t>(field, 0) : std::nullopt;
  }

 private:
  struct Page {
    uint64_t number = std::numeric_limits<uint64_t>::max();
    uint64_t lastUse = 0;
    std::array<std::byte, kPageSize> bytes;  // of the last page only what the dump has
  };

  const Page* Load(uint64_t number) {
    auto page = std::ranges::find(pages, number, &Page::number);
    if (page == pages.end() && !hasFailed) {
      page = std::ranges::min_element(pages, {}, &Page::lastUse);
      const uint64_t begin = number * kPageSize;
      const auto length = static_cast<size_t>(std::min<uint64_t>(kPageSize, Size() - begin));
      hasFailed = !source.copy(begin, std::span(page->bytes).first(length));
      page->number = number;
      ++pagesCopied;
    }
    if (hasFailed) {
      return nullptr;
    }
    page->lastUse = ++uses;
    return &*page;
  }

  const DumpSource& source;
  std::array<Page, 4> pages;
  uint64_t uses = 0;
  uint64_t pagesCopied = 0;
  bool hasFailed = false;
};

// Where the first module list begins.
std::optional<uint32_t> FindModuleList(PagedDump& dump, DumpLeftOut& leftOut) {
  const auto streamCount = dump.Read32(8);
  const auto directory = dump.Read32(12);
  if (!streamCount || !directory || *directory > dump.Size() ||
      *streamCount > (dump.Size() - *directory) / kDirectoryEntrySize) {
    return std::nullopt;
  }
  const uint64_t count = std::min<uint64_t>(*streamCount, kMaxDumpStreams);
  for (uint64_t i = 0; i < count; ++i) {
    const uint64_t entry = *directory + i * kDirectoryEntrySize;
    if (dump.Read32(entry) == kModuleListStream) {
      return dump.Read32(entry + 8);
    }
  }
  leftOut.streams = *streamCount - count;
  return std::nullopt;
}

// The search of one name for ".exe", piece by piece.
struct NameSearch {
  static constexpr std::string_view kSuffix = ".exe";

  // False once the suffix has been found or the name has ended. An odd byte at the end of the name
  // is no character.
  bool GoOn(std::span<const std::byte> part) {
    size_t at = 0;
    size_t now = matched;
    for (; at + 1 < part.size() && now < kSuffix.size(); at += 2) {
      const auto unit = *ReadLittleEndian<uint16_t>(part, at);
      if (unit == 0) {
        hasEnded = true;
        break;
      }
      // No part of the suffix begins anew within it: a mismatch starts over, at most with the dot.
      now = unit == kSuffix[now] ? now + 1 : unit == kSuffix[0] ? 1 : 0;
    }
    matched = now;
    examined += at;
    return !IsFound() && !hasEnded;
  }
  bool IsFound() const { return matched == kSuffix.size(); }

  uint64_t examined = 0;  // bytes
  size_t matched = 0;
  bool hasEnded = false;
};

// Searches the name at `rva`: a length and UTF-16 text behind it. One outside the dump is empty.
NameSearch SearchName(PagedDump& dump, uint32_t rva, DumpLeftOut& leftOut) {
  NameSearch search;
  const auto announced = rva == 0 ? std::nullopt : dump.Read32(rva);
  if (!announced) {
    return search;
  }
  const uint64_t begin = uint64_t{rva} + sizeof(uint32_t);
  const uint64_t length = std::min<uint64_t>(*announced, dump.Size() - begin);
  const uint64_t end = begin + std::min(length, kMaxDumpNameBytes);
  std::array<std::byte, kNamePart> buffer;
  for (uint64_t at = begin; at < end; at += kNamePart) {
    const auto part = std::span(buffer).first(std::min<size_t>(kNamePart, end - at));
    if (!dump.Copy(at, part) || !search.GoOn(part)) {
      return search;
    }
  }
  leftOut.names += length > kMaxDumpNameBytes ? 1 : 0;
  return search;
}

std::optional<uint32_t> FindCrashModuleTime(PagedDump& dump, uint64_t list, uint32_t announced,
                                            DumpLeftOut& leftOut) {
  const uint64_t count = std::min<uint64_t>(announced, (dump.Size() - list) / kModuleSize);
  uint64_t examined = 0;
  uint64_t i = 0;
  const uint64_t maxPages = dump.PagesCopied() + kMaxDumpPages;
  for (; i < count && i < kMaxDumpModules && examined < kMaxDumpNamesBytes &&
         dump.PagesCopied() < maxPages;
       ++i) {
    const uint64_t module = list + i * kModuleSize;
    const auto nameRva = dump.Read32(module + 20);
    if (!nameRva) {
      return std::nullopt;
    }
    const NameSearch search = SearchName(dump, *nameRva, leftOut);
    if (search.IsFound()) {
      return dump.Read32(module + 16);
    }
    examined += search.examined;
  }
  leftOut.modules = count - i;
  return std::nullopt;
}

}  // namespace

DumpReading ReadMinidump(const DumpSource& source) {
  PagedDump dump(source);
  DumpReading reading = {DumpKind::kNoModuleList};
  const auto signature = dump.Read32(0);
  if (!dump.HasFailed() && signature != kSignature) {
    return {DumpKind::kForeign};
  }
  const auto list = FindModuleList(dump, reading.leftOut);
  const auto count = list ? dump.Read32(*list) : std::nullopt;
  if (!count) {
    return reading;
  }
  reading.crashModuleTime =
      FindCrashModuleTime(dump, uint64_t{*list} + sizeof(uint32_t), *count, reading.leftOut);
  if (dump.HasFailed()) {
    return {DumpKind::kNoModuleList};
  }
  reading.kind = DumpKind::kModules;
  return reading;
}

}  // namespace ostrell
