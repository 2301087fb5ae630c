#include "env/product_version.h"

#include <array>
#include <optional>

#include "base/text.h"
#include "env/dotted_number_list.h"
#include "env/run.h"

namespace ostrell {
namespace {

constexpr size_t kRefusedSize = 16;

// The content of the file up to its first zero.
std::optional<ProductVersionText> ReadVersionFile(const Files& files, const wchar_t* path) {
  const auto file = files.Open(path, FileUse::kStable);
  if (!file || file->Size().value_or(kRefusedSize) >= kRefusedSize) {
    return std::nullopt;
  }
  std::array<char, kRefusedSize + 1> content{};
  const auto bytes = std::as_writable_bytes(std::span(content)).first(kRefusedSize);
  return file->ReadAt(0, bytes) ? std::optional(ProductVersionText(content.data())) : std::nullopt;
}

}  // namespace

int32_t ReadProductVersion(const Run& run, ProductVersionText& version) {
  // The folder ends with a backslash already; Windows takes two of them as one.
  const auto path = WidePathText::Print(L"%s\\VERSION", run.paths.install.wide.View());
  const std::optional<ProductVersionText> content = ReadVersionFile(run.files, path.CStr());
  if (!content) {
    version = {};
    return 0;
  }
  version = ProductVersionText(TrimBlanks(content->View()));
  return IsDottedNumberList(version.View()) ? 1 : 0;
}

}  // namespace ostrell
