#include <windows.h>

#include <array>
#include <optional>

#include "base/handle_win.h"
#include "base/text.h"
#include "env/dotted_number_list.h"
#include "env/product_version.h"

namespace ostrell {
namespace {

constexpr DWORD kRefusedSize = 16;

// The content of the file up to its first zero.
std::optional<ProductVersionText> ReadVersionFile(const wchar_t* path) {
  const FileHandle file(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  LARGE_INTEGER size;
  if (!file || !GetFileSizeEx(file.Get(), &size) || size.QuadPart >= kRefusedSize) {
    return std::nullopt;
  }
  std::array<char, kRefusedSize + 1> content{};
  DWORD bytesRead = 0;
  if (!ReadFile(file.Get(), content.data(), kRefusedSize, &bytesRead, nullptr)) {
    return std::nullopt;
  }
  return ProductVersionText(content.data());
}

}  // namespace

int32_t ReadProductVersion(ProductVersionText& version) {
  return ReadProductVersion(GetProductPaths().install.wide, version);
}

int32_t ReadProductVersion(const WidePathText& installFolder, ProductVersionText& version) {
  // The folder ends with a backslash already; Windows takes two of them as one.
  const auto path = WidePathText::Print(L"%s\\VERSION", installFolder.View());
  const std::optional<ProductVersionText> content = ReadVersionFile(path.CStr());
  if (!content) {
    version = {};
    return 0;
  }
  version = ProductVersionText(TrimBlanks(content->View()));
  return IsDottedNumberList(version.View()) ? 1 : 0;
}

}  // namespace ostrell
