#include <cstdio>

#include "store/delete_file.h"

namespace ostrell {

void DeleteFileAt(const char* path) {
  std::remove(path);
}

}  // namespace ostrell
