#include "env/signature_version.h"

#include <array>
#include <string_view>

#include "env/product_paths.h"

namespace ostrell {
namespace {

constexpr std::array<std::string_view, 5> kSignatureFiles = {"patt.db", "attr.db", "mal.db",
                                                             "okh.db", "keyhash.db"};

uint64_t ReadVersion(const char* path, const Svclink& svclink) {
  const SvclinkObjectOwner file = svclink.OpenSignatureFile(path);
  if (!file) {
    return 0;
  }
  const SvclinkRecordOwner header = svclink.TakeRecord(file.Get());
  return header ? header->version : 0;
}

}  // namespace

uint64_t NewestSignatureVersion(std::string_view dataPath, const Svclink& svclink) {
  uint64_t newest = 0;
  for (const std::string_view name : kSignatureFiles) {
    const auto path = PathText::Print("%ssigdb\\%s", dataPath, name);
    if (newest <= ReadVersion(path.CStr(), svclink)) {
      newest = ReadVersion(path.CStr(), svclink);
    }
  }
  return newest;
}

}  // namespace ostrell
