#include "devkit/report_server/private_folder.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace ostrell {

PrivateFolder::PrivateFolder() {
  std::string name = std::filesystem::temp_directory_path() / "report_server_XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), name);
  }
  path = name;
}

PrivateFolder::~PrivateFolder() {
  std::error_code ignored;  // what stays is in nobody's way
  std::filesystem::remove_all(path, ignored);
}

std::vector<std::filesystem::path> PrivateFolder::Files() const {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(path)) {
    files.push_back(entry.path());
  }
  return files;
}

}  // namespace ostrell
