#pragma once

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

namespace ostrell {

// For tests: an empty folder with a name past ASCII, deleted at the end. Names are relative to it.
class TestFolder {
 public:
  TestFolder() {
    std::filesystem::remove_all(path);  // what a crashed process left
    std::filesystem::create_directories(path);
  }
  ~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;
  TestFolder(TestFolder&&) = delete;
  TestFolder& operator=(TestFolder&&) = delete;

  const std::filesystem::path& Path() const { return path; }
  std::string Utf8(const char* name) const {
    const std::u8string text = (path / name).u8string();
    return {text.begin(), text.end()};
  }

  void Write(const char* name, std::string_view text) const {
    std::filesystem::create_directories((path / name).parent_path());
    std::ofstream(path / name, std::ios::binary) << text;
  }

 private:
  const std::filesystem::path path = std::filesystem::temp_directory_path() /
                                     (L"ostrell-\u00e4-" + std::to_wstring(GetCurrentProcessId()));
};

// The content of a file; nothing when it is missing.
inline std::optional<std::string> ContentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    return std::nullopt;
  }
  return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace ostrell
