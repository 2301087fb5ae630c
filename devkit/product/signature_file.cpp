#include "devkit/product/signature_file.h"

#include <algorithm>
#include <charconv>

#include "base/text.h"

namespace ostrell {
namespace {

constexpr std::string_view kTitle = "OSTRELL-SIGNATURES 1";
constexpr std::string_view kVersion = "version = ";

// Takes the next line off `text`.
std::string_view TakeLine(std::string_view& text) {
  const size_t end = std::min(text.find('\n'), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return TrimTrailingBlanks(line);
}

}  // namespace

std::optional<uint64_t> SignatureFileVersion(std::string_view text) {
  if (TakeLine(text) != kTitle) {
    return std::nullopt;
  }
  std::string_view line = TakeLine(text);
  if (!line.starts_with(kVersion)) {
    return std::nullopt;
  }
  line.remove_prefix(kVersion.size());
  uint64_t version = 0;
  const char* end = line.data() + line.size();
  const auto [parsed, error] = std::from_chars(line.data(), end, version);
  return error == std::errc() && parsed == end ? std::optional(version) : std::nullopt;
}

}  // namespace ostrell
