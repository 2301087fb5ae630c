#include "unified/dump_view_win.h"

#include <windows.h>

namespace ostrell {

DumpSource SourceOfView(std::span<const std::byte> view) {
  return {view.size(), [view](uint64_t offset, std::span<std::byte> to) {
            // The system copies on its own behalf, and answers with an error.
            return ReadProcessMemory(GetCurrentProcess(), view.data() + offset, to.data(),
                                     to.size(), nullptr) != 0;
          }};
}

}  // namespace ostrell
