#include <windows.h>

#include "base/text_win.h"
#include "store/delete_file.h"

namespace ostrell {

void DeleteFileAt(const char* path) {
  if (const auto wide = WideFromUtf8(path)) {
    DeleteFileW(wide->c_str());
  }
}

}  // namespace ostrell
