#include "base/registry_text.h"

#include <cstdint>

#include "base/bytes.h"

namespace ostrell {

std::wstring TextUpToZero(std::span<const std::byte> bytes) {
  std::wstring text;
  text.reserve((bytes.size() + 1) / 2);
  for (size_t i = 0; i < bytes.size(); i += 2) {
    const auto low = std::to_integer<uint32_t>(bytes[i]);
    const auto high = i + 1 < bytes.size() ? std::to_integer<uint32_t>(bytes[i + 1]) : 0;
    const auto unit = static_cast<wchar_t>(low | high << 8);
    if (unit == L'\0') {
      break;
    }
    text += unit;
  }
  return text;
}

std::optional<std::wstring> TerminatedText(std::span<const std::byte> bytes) {
  if (bytes.size() % 2 != 0 ||
      (!bytes.empty() && ReadLittleEndian<uint16_t>(bytes, bytes.size() - 2) != 0)) {
    return std::nullopt;
  }
  return TextUpToZero(bytes);
}

}  // namespace ostrell
