#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace ostrell {

// The file at a Windows path, such as "C:\Users\a.exe", in the folder `drive` that a Wine prefix
// keeps as that drive. ASCII letters match without regard to case. Nothing when there is none.
std::optional<std::filesystem::path> FindInDrive(const std::filesystem::path& drive,
                                                 std::string_view windowsPath);

// Why a file is not sent as a sample: there is none, or its size. Empty when it is sent.
std::string WhyWrongSize(const std::filesystem::path& file);
// The same for one that lies where the user keeps it: there also what it is counts.
std::string WhyNoSample(const std::optional<std::filesystem::path>& file);

}  // namespace ostrell
