#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace ostrell {

// Reads the crashed program's link time out of a minidump (MINIDUMP_HEADER and its kin, as the
// vendor documents them in minidumpapiset.h). Touches the header, the stream directory, the module
// list and the names of its modules, nothing else, and allocates nothing.

enum class DumpKind {
  kForeign,       // no minidump: the signature is missing
  kNoModuleList,  // a minidump that says nothing of modules, or whose directory is damaged
  kModules,
};

struct DumpReading {
  DumpKind kind;
  // TimeDateStamp of the first module whose name contains ".exe" (case-sensitive); nothing when
  // there is none. Only with kModules.
  std::optional<uint32_t> crashModuleTime;
};

// The directory counts as damaged when it does not lie in the dump as a whole, or when its first
// module list does not even begin there. A module list that is cut, lies about its count or has
// names outside the dump is read as far as it is sound: an entry outside ends the list, and a name
// outside is empty. A name ends at its length, at its first zero or with the dump. Names that
// overlap, so that together they are longer than the dump, end the list, too: the work is linear in
// the size of the dump.
DumpReading ReadMinidump(std::span<const std::byte> dump);

}  // namespace ostrell
