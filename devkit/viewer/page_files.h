#pragma once

#include <span>
#include <string_view>

namespace ostrell {

// The files of the page, as they lie in page/, embedded by CMake.
struct PageFile {
  std::string_view name;  // "viewer.js"
  std::string_view content;
};
std::span<const PageFile> PageFiles();

}  // namespace ostrell
