#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/bounded_text.h"

namespace ostrell {

inline constexpr size_t kPathSize = 512;  // characters, terminator included
using PathText = BoundedText<char, kPathSize>;
using WidePathText = BoundedText<wchar_t, kPathSize>;

// A folder in both forms, ending with a backslash. Both are empty when the registry does not tell,
// and when the UTF-8 form has kPathSize bytes or more.
struct ProductFolder {
  PathText utf8;
  WidePathText wide;
};

// The product's databases, relative to the data path. Jobs address them by row.
inline constexpr std::array<std::string_view, 25> kDatabaseNames = {
    "sigdb",         "db\\actmon.db",  "db\\guard.db",   "guard.db",       "journal.db",
    "db\\badurl.db", "db\\urlcat.db",  "db\\webrep.db",  "db\\paysafe.db", "okfile.db",
    "owner.db",      "db\\sppin.db",   "db\\okls.db",    "db\\qxfw.db",    "mgmtcon",
    "db\\ipfil.db",  "db\\ipguard.db", "fixokls.db",     "db\\sysfix.db",  "allowlist.db",
    "vpexclude.db",  "vpresult",       "db\\vulnfix.db", "db\\adblk.db",   "adblkuser.db"};

// Where the product is installed.
struct ProductPaths {
  ProductFolder install;  // HKLM "SOFTWARE\Velmora\Corvane", "InstallPath"
  ProductFolder data;     // HKLM "SOFTWARE\Velmora\Corvane\app", "DataPath"
  ProductFolder console;  // HKLM "SOFTWARE\Velmora\Zentrova", "InstallPath"; mostly absent
  // Data path followed by the name, cut to kPathSize - 1 bytes; the bare name when there is no data
  // path.
  std::array<PathText, kDatabaseNames.size()> databases;
};

// The process-wide record, filled by the first call and never changed.
const ProductPaths& GetProductPaths();

// Reads the registry afresh.
ProductPaths ReadProductPaths();

// Reads one folder from HKLM, up to its first zero, and appends a backslash where it lacks one; a
// path of 511 characters has no room for it and stays without. Returns 0 or a Windows
// error code: 13 (ERROR_INVALID_DATA) for a value that is empty or not REG_SZ, 234
// (ERROR_MORE_DATA) for one of more than 1024 bytes. `path` is not touched when the key does not
// open; its content is of no use after any other failure.
int32_t ReadRegistryPath(const wchar_t* subkey, const wchar_t* valueName, WidePathText& path);

}  // namespace ostrell
