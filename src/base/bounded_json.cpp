#include "base/bounded_json.h"

#include <utility>

#include "base/json_memory.h"

namespace ostrell {

size_t CountJsonElements(std::string_view text) {
  size_t count = 0;
  bool inText = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '"') {
      inText = !inText;
    } else if (inText) {
      i += c == '\\' ? 1 : 0;  // whatever is escaped ends no text
    } else if (c == '[' || c == '{' || c == ',') {
      ++count;
    }
  }
  return count;
}

JsonOwner ParseJson(std::string_view text, size_t maxElements) {
  if (text.empty() || (text.size() > maxElements && CountJsonElements(text) > maxElements)) {
    return {};
  }
  const JsonMemoryWatch memory;
  JsonOwner value(json_loadb(text.data(), text.size(), 0, nullptr));
  return memory.WasRefused() ? JsonOwner() : std::move(value);
}

}  // namespace ostrell
