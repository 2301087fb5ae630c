#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "fuzz/fuzz_target.h"
#include "tests/support/dump_bytes.h"
#include "unified/minidump.h"

namespace ostrell {
namespace {

using Bytes = std::span<const std::byte>;

// The reading as one would write it over a dump in memory, without pages and limits: an input is
// too short to meet one.

bool NamesProgram(Bytes dump, uint32_t rva) {
  const auto length = rva == 0 ? std::nullopt : ReadLittleEndian<uint32_t>(dump, rva);
  if (!length) {
    return false;
  }
  Bytes name = dump.subspan(size_t{rva} + 4);
  name = name.first(std::min<size_t>(*length, name.size()));
  std::u16string text(name.size() / 2, u'\0');
  std::memcpy(text.data(), name.data(), 2 * text.size());
  return text.substr(0, text.find(u'\0')).find(u".exe") != std::u16string::npos;
}

DumpReading PlainReading(Bytes dump) {
  const auto read = [dump](uint64_t offset) { return ReadLittleEndian<uint32_t>(dump, offset); };
  if (!TextOf(dump).starts_with("MDMP")) {
    return {DumpKind::kForeign};
  }
  const uint64_t streams = read(8).value_or(0);
  const uint64_t directory = read(12).value_or(0);
  if (!read(12) || !Slice(dump, directory, 12 * streams)) {
    return {DumpKind::kNoModuleList};
  }
  for (uint64_t entry = directory; entry < directory + 12 * streams; entry += 12) {
    if (read(entry) != 4u) {
      continue;
    }
    const uint64_t list = *read(entry + 8);
    if (!read(list)) {
      return {DumpKind::kNoModuleList};
    }
    for (uint64_t i = 0; i < *read(list) && Slice(dump, list + 4 + 108 * i, 108); ++i) {
      if (NamesProgram(dump, *read(list + 4 + 108 * i + 20))) {
        return {DumpKind::kModules, *read(list + 4 + 108 * i + 16)};
      }
    }
    return {DumpKind::kModules};
  }
  return {DumpKind::kNoModuleList};
}

void RequireSame(const DumpReading& reading, const DumpReading& expected) {
  Require(reading.kind == expected.kind);
  Require(reading.crashModuleTime == expected.crashModuleTime);
  Require(reading.leftOut == DumpLeftOut());
}

}  // namespace
}  // namespace ostrell

// The input is the dump. Its last byte says where a gap opens in it, so that it takes several
// pages, and which read of a page fails, where there are as many.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace ostrell;
  constexpr size_t kGap = 3996;
  const uint8_t choice = size == 0 ? 0 : data[size - 1];
  const size_t gapAt = size * (choice / 8) / 32;
  const auto input = std::as_bytes(std::span(data, size));
  std::vector<std::byte> dump(input.begin(), input.end());
  dump.insert(dump.begin() + static_cast<ptrdiff_t>(gapAt), gapAt == 0 ? 0 : kGap, std::byte{0});
  const DumpReading expected = PlainReading(dump);
  RequireSame(ReadMinidump(SourceOf(dump)), expected);

  const int failing = choice % 8;
  int reads = 0;
  const DumpSource source = {dump.size(), [&](uint64_t offset, std::span<std::byte> to) {
                               return reads++ != failing && SourceOf(dump).copy(offset, to);
                             }};
  const DumpReading reading = ReadMinidump(source);
  Require(reads <= failing + 1);  // none once one has failed
  RequireSame(reading, reads <= failing ? expected : DumpReading{DumpKind::kNoModuleList});
  return 0;
}
