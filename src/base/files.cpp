#include "base/files.h"

#include <algorithm>

namespace ostrell {

bool ReadExactly(const OpenFile& file, uint64_t offset, std::span<std::byte> to) {
  constexpr size_t kMaxAtOnce = 1 << 20;  // some network drives refuse to read many megabytes
  while (!to.empty()) {
    const size_t taken = file.ReadAt(offset, to.first(std::min(to.size(), kMaxAtOnce))).value_or(0);
    if (taken == 0) {
      return false;
    }
    offset += taken;
    to = to.subspan(taken);
  }
  return true;
}

std::wstring PathIn(const std::wstring& folder, const std::wstring& name) {
  return folder.ends_with(L'\\') ? folder + name : folder + L'\\' + name;
}

}  // namespace ostrell
