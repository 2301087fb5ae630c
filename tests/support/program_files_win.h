#pragma once

#include <windows.h>

#include <fmt/core.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "base/handle_win.h"
#include "unified/local_time_win.h"

namespace ostrell {

// For tests: files beside the test program and above it, and the messages that the stand-in of the
// logging library writes there. The program's folder is made the current one, as in the agent.
class ProgramFiles {
 public:
  ProgramFiles() {
    std::filesystem::current_path(Folder());
    std::filesystem::remove(Folder() / L"tracelog.txt");
  }
  ~ProgramFiles() {
    std::error_code ignored;
    for (const auto& path : written) {
      std::filesystem::remove_all(path, ignored);
    }
  }
  ProgramFiles(const ProgramFiles&) = delete;
  ProgramFiles& operator=(const ProgramFiles&) = delete;
  ProgramFiles(ProgramFiles&&) = delete;
  ProgramFiles& operator=(ProgramFiles&&) = delete;

  static std::filesystem::path Folder() {
    wchar_t path[MAX_PATH];
    return std::filesystem::path(path, path + GetModuleFileNameW(nullptr, path, MAX_PATH))
        .parent_path();
  }

  // `name` may lead to other folders. The file is deleted at the end.
  std::filesystem::path Write(const std::filesystem::path& name, std::string_view text) {
    auto path = Folder() / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
    written.push_back(path);
    return path;
  }
  void MakeFolder(const std::filesystem::path& name) {
    written.push_back(Folder() / name);
    std::filesystem::create_directories(written.back());
  }

  // Dates the last writing and returns that time as the unified report sees it.
  static int64_t SetTime(const std::filesystem::path& path, const FILETIME& utc) {
    const FileHandle file(CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    SetFileTime(file.Get(), nullptr, nullptr, &utc);
    return LocalTimeSeconds(utc);
  }

  // Every message so far as "operation text"; those of another level than 1 keep it in front.
  static std::vector<std::string> Messages() {
    std::vector<std::string> messages;
    std::ifstream log(Folder() / L"tracelog.txt");
    for (std::string line; std::getline(log, line);) {
      const size_t colon = line.find(':');
      const size_t level = line.find(' ', colon) + 1;
      const std::string text = line.substr(line.find(' ', level) + 1);
      const std::string prefix = line[level] == '1' ? "" : line.substr(level, 2);
      messages.push_back(fmt::format("{}{} {}", prefix, line.substr(0, colon), text));
    }
    return messages;
  }

 private:
  std::vector<std::filesystem::path> written;
};

}  // namespace ostrell
