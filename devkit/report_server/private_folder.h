#pragma once

#include <filesystem>
#include <vector>

namespace ostrell {

// An empty folder among the temporary ones that only this user can enter; it goes with its owner.
class PrivateFolder {
 public:
  // Throws std::system_error where none can be made.
  PrivateFolder();
  ~PrivateFolder();
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder(PrivateFolder&&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;
  PrivateFolder& operator=(PrivateFolder&&) = delete;

  const std::filesystem::path& Path() const { return path; }
  std::vector<std::filesystem::path> Files() const;

 private:
  std::filesystem::path path;
};

}  // namespace ostrell
