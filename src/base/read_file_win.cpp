#include "base/read_file_win.h"

#include <algorithm>

namespace ostrell {

bool ReadExactly(HANDLE file, std::span<std::byte> to) {
  constexpr size_t kMostAtOnce = 1 << 20;  // some network drives refuse to read many megabytes
  while (!to.empty()) {
    DWORD taken = 0;
    const auto wanted = static_cast<DWORD>(std::min(to.size(), kMostAtOnce));
    if (!ReadFile(file, to.data(), wanted, &taken, nullptr) || taken == 0) {
      return false;
    }
    to = to.subspan(taken);
  }
  return true;
}

}  // namespace ostrell
