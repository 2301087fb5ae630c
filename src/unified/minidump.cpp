#include "unified/minidump.h"

#include <algorithm>

#include "base/bytes.h"

namespace ostrell {
namespace {

using Bytes = std::span<const std::byte>;

constexpr uint32_t kSignature = 0x504D444D;  // "MDMP"
constexpr uint32_t kModuleListStream = 4;
constexpr uint64_t kDirectoryEntrySize = 12;
constexpr uint64_t kModuleSize = 108;

// Where the first module list begins.
std::optional<uint32_t> FindModuleList(Bytes dump) {
  const auto streamCount = ReadLittleEndian<uint32_t>(dump, 8);
  const auto directoryRva = ReadLittleEndian<uint32_t>(dump, 12);
  if (!streamCount || !directoryRva) {
    return std::nullopt;
  }
  const auto directory = Slice(dump, *directoryRva, *streamCount * kDirectoryEntrySize);
  if (!directory) {
    return std::nullopt;
  }
  for (uint64_t entry = 0; entry < directory->size(); entry += kDirectoryEntrySize) {
    if (ReadLittleEndian<uint32_t>(*directory, entry) == kModuleListStream) {
      return ReadLittleEndian<uint32_t>(*directory, entry + 8);
    }
  }
  return std::nullopt;
}

// The bytes of a module's name: a length and UTF-16 text behind it. Empty outside the dump.
Bytes ModuleName(Bytes dump, uint32_t rva) {
  const auto length = rva == 0 ? std::nullopt : ReadLittleEndian<uint32_t>(dump, rva);
  if (!length) {
    return {};
  }
  const Bytes text = dump.subspan(rva + sizeof(uint32_t));
  return text.first(std::min<size_t>(*length, text.size()));
}

// True when ".exe" stands before the name's first zero. `examined` grows by the bytes looked at.
bool NamesExecutable(Bytes name, uint64_t& examined) {
  constexpr std::string_view kSuffix = ".exe";
  size_t matched = 0;
  for (size_t at = 0; at + 1 < name.size(); at += 2) {
    examined += 2;
    const auto unit = *ReadLittleEndian<uint16_t>(name, at);
    if (unit == 0) {
      return false;
    }
    // No part of the suffix begins anew within it: a mismatch starts over, at most with the dot.
    matched = unit == kSuffix[matched] ? matched + 1 : unit == kSuffix[0] ? 1 : 0;
    if (matched == kSuffix.size()) {
      return true;
    }
  }
  return false;
}

std::optional<uint32_t> FindCrashModuleTime(Bytes dump, uint64_t list, uint32_t count) {
  uint64_t examined = 0;
  for (uint32_t i = 0; i < count && examined <= dump.size(); ++i) {
    const auto module = Slice(dump, list + i * kModuleSize, kModuleSize);
    if (!module) {
      break;
    }
    const auto nameRva = *ReadLittleEndian<uint32_t>(*module, 20);
    if (NamesExecutable(ModuleName(dump, nameRva), examined)) {
      return ReadLittleEndian<uint32_t>(*module, 16);
    }
  }
  return std::nullopt;
}

}  // namespace

DumpReading ReadMinidump(Bytes dump) {
  if (ReadLittleEndian<uint32_t>(dump, 0) != kSignature) {
    return {DumpKind::kForeign, std::nullopt};
  }
  const auto list = FindModuleList(dump);
  const auto count = list ? ReadLittleEndian<uint32_t>(dump, *list) : std::nullopt;
  if (!count) {
    return {DumpKind::kNoModuleList, std::nullopt};
  }
  return {DumpKind::kModules,
          FindCrashModuleTime(dump, uint64_t{*list} + sizeof(uint32_t), *count)};
}

}  // namespace ostrell
