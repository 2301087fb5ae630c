#pragma once

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "base/redirection_win.h"

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

  void Write(const char* name, std::string_view text) const {
    std::filesystem::create_directories((path / name).parent_path());
    std::ofstream(path / name, std::ios::binary) << text;
  }

 private:
  const std::filesystem::path path = std::filesystem::temp_directory_path() /
                                     (L"ostrell-\u00e4-" + std::to_wstring(GetCurrentProcessId()));
};

// For tests: redirection of the file system that notes when it is switched, as "off " and "on ".
struct NotedRedirection {
  std::string calls;
  BOOL works = TRUE;
  RedirectionApi api{[this](void** before) {
                       calls += "off ";
                       *before = &calls;
                       return works;
                     },
                     [this](void* before) {
                       calls += before == &calls ? "on " : "on from elsewhere ";
                       return TRUE;
                     }};
};

}  // namespace ostrell
