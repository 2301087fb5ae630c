#include <algorithm>
#include <optional>
#include <string>
#include <tuple>

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
  const Bytes behind = dump.subspan(size_t{rva} + 4);
  const Bytes name = behind.first(std::min<size_t>(*length, behind.size()));
  std::u16string text;
  while (const auto unit = ReadLittleEndian<uint16_t>(name, 2 * text.size())) {
    text += static_cast<char16_t>(*unit);
  }
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
  uint64_t entry = directory;
  while (entry < directory + 12 * streams && read(entry) != 4U) {
    entry += 12;
  }
  const auto list = entry < directory + 12 * streams ? read(entry + 8) : std::nullopt;
  const auto count = list ? read(*list) : std::nullopt;
  if (!count) {
    return {DumpKind::kNoModuleList};
  }
  uint64_t module = uint64_t{*list} + 4;
  for (uint64_t i = 0; i < *count && Slice(dump, module, 108); ++i, module += 108) {
    if (NamesProgram(dump, *read(module + 20))) {
      return {DumpKind::kModules, *read(module + 16)};
    }
  }
  return {DumpKind::kModules};
}

bool AreSame(const DumpReading& one, const DumpReading& other) {
  return std::tie(one.kind, one.crashModuleTime, one.leftOut) ==
         std::tie(other.kind, other.crashModuleTime, other.leftOut);
}

}  // namespace

// The input is the dump. Its last byte says where a gap opens in it, so that it takes several
// pages, and which read of a page fails, where there are as many.
void CheckInput(std::string_view input) {
  constexpr size_t kGap = 3996;
  const size_t choice = input.empty() ? 0 : static_cast<uint8_t>(input.back());
  const size_t gapAt = input.size() * (choice / 8) / 32;
  const std::string dump = std::string(input).insert(gapAt, gapAt == 0 ? 0 : kGap, '\0');
  const DumpReading expected = PlainReading(BytesOf(dump));
  Require(AreSame(ReadMinidump(SourceOf(dump)), expected));

  const size_t failing = choice % 8;
  size_t reads = 0;
  const DumpSource source = {dump.size(), [&](uint64_t offset, std::span<std::byte> to) {
                               return reads++ != failing && SourceOf(dump).copy(offset, to);
                             }};
  const DumpReading reading = ReadMinidump(source);
  Require(reads <= failing + 1);  // none once one has failed
  Require(AreSame(reading, reads <= failing ? expected : DumpReading{DumpKind::kNoModuleList}));
}

}  // namespace ostrell
