#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace ostrell {

// Reads the crashed program's link time out of a minidump (MINIDUMP_HEADER and its kin, as the
// vendor documents them in minidumpapiset.h). Copies pages that hold the header, the stream
// directory, the module list or the names of its modules, no others, and allocates nothing.

// Where the bytes of a dump come from.
struct DumpSource {
  uint64_t size;
  // Copies `to.size()` bytes at `offset`, all of which lie in the dump, at most a page of 4 KiB.
  // False when they cannot be read, whatever is in `to` then.
  std::function<bool(uint64_t offset, std::span<std::byte> to)> copy;
};

enum class DumpKind {
  kForeign,       // no minidump: the signature is missing
  kNoModuleList,  // a minidump that says nothing of modules, whose directory is damaged, or of
                  // which a page that was looked for cannot be read
  kModules,
};

// How many things were not looked at because of a limit. All 0 for any dump that a system writes.
struct DumpLeftOut {
  uint64_t streams = 0;  // entries of the directory
  uint64_t modules = 0;
  uint64_t names = 0;  // rests of overlong names

  bool operator==(const DumpLeftOut&) const = default;
};

struct DumpReading {
  DumpKind kind;
  // TimeDateStamp of the first module whose name contains ".exe" (case-sensitive); nothing when
  // there is none. Only with kModules.
  std::optional<uint32_t> crashModuleTime{};
  DumpLeftOut leftOut{};
};

inline constexpr uint64_t kMaxDumpStreams = 65536;
inline constexpr uint64_t kMaxDumpModules = 16384;
inline constexpr uint64_t kMaxDumpNameBytes = 65536;                // of one name
inline constexpr uint64_t kMaxDumpNamesBytes = uint64_t{16} << 20;  // of all names
inline constexpr uint64_t kMaxDumpPages = 512;  // copied for list and names; ends with a name

// The directory counts as damaged when it does not lie in the dump as a whole, or when its first
// module list does not even begin there. A module list that is cut, lies about its count or has
// names outside the dump is read as far as it is sound: an entry outside ends the list, and a name
// outside is empty. A name ends at its length, at its first zero or with the dump.
//
// The work is bounded whatever the size of the dump: only the first entries of directory and list
// are looked at, of a name only its first bytes, and when the names or the pages so far come to
// their limit the list ends: names apart from each other cost more than their bytes. A page that
// cannot be read ends everything: a program that was not reached must not seem missing.
DumpReading ReadMinidump(const DumpSource& dump);

}  // namespace ostrell
