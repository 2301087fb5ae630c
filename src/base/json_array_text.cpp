#include "base/json_array_text.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace ostrell {

bool JsonArrayText::Append(const json_t* element) {
  size_t length = json_dumpb(element, scratch.data(), scratch.size(), JSON_COMPACT);
  if (length > scratch.size()) {
    scratch.resize(std::max<size_t>(length, 4096));
    length = json_dumpb(element, scratch.data(), scratch.size(), JSON_COMPACT);
  }
  text += text.empty() ? '[' : ',';
  text.append(scratch, 0, length);
  return length > 0;
}

void JsonArrayText::Add(const json_t* element) noexcept {
  try {
    isWhole = isWhole && Append(element);
  } catch (const std::exception&) {
    isWhole = false;
  }
}

std::optional<std::string> JsonArrayText::Take() noexcept {
  std::string taken = std::exchange(text, {});
  if (!std::exchange(isWhole, true) || taken.empty() || taken.size() >= kMaxBytes) {
    return std::nullopt;
  }
  try {
    taken += ']';
    return taken;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace ostrell
