#include "devkit/report_server/drive_file.h"

#include <algorithm>
#include <array>
#include <fstream>

#include "base/text.h"

namespace ostrell {
namespace {

std::optional<std::filesystem::path> FindInFolder(const std::filesystem::path& folder,
                                                  std::string_view name) {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    if (EqualsIgnoringCase(entry.path().filename().string(), name)) {
      return entry.path();
    }
  }
  return std::nullopt;
}

bool IsShellLink(const std::filesystem::path& file) {
  constexpr std::array<char, 4> kHeaderSize = {0x4C, 0, 0, 0};
  std::array<char, 4> begin{};
  std::ifstream(file, std::ios::binary).read(begin.data(), begin.size());
  return begin == kHeaderSize;
}

}  // namespace

std::optional<std::filesystem::path> FindInDrive(const std::filesystem::path& drive,
                                                 std::string_view windowsPath) {
  if (!StartsWithIgnoringCase(windowsPath, "C:\\")) {
    return std::nullopt;
  }
  std::optional<std::filesystem::path> found = drive;
  std::string_view rest = windowsPath.substr(3);
  while (found && !rest.empty()) {
    const size_t end = std::min(rest.find('\\'), rest.size());
    found = FindInFolder(*found, rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return found;
}

std::string WhyWrongSize(const std::filesystem::path& file) {
  constexpr uintmax_t kMin = 1024;
  constexpr uintmax_t kMax = 5 << 20;
  std::error_code error;
  const uintmax_t size = std::filesystem::file_size(file, error);
  if (error) {
    return "no such file";
  }
  return size < kMin   ? "too small, " + std::to_string(size)
         : size > kMax ? "too large, " + std::to_string(size)
                       : "";
}

std::string WhyNoSample(const std::optional<std::filesystem::path>& file) {
  const std::string why = WhyWrongSize(file.value_or(""));
  return why.empty() && IsShellLink(*file) ? "a shell link" : why;
}

}  // namespace ostrell
