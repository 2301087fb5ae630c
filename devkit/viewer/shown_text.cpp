#include "devkit/viewer/shown_text.h"

namespace ostrell {

std::string TextOfValue(const json_t* value) {
  if (json_is_string(value)) {
    return {json_string_value(value), json_string_length(value)};
  }
  const JsonText text(json_dumps(value, JSON_COMPACT | JSON_ENCODE_ANY));
  return text ? text.Get() : "";
}

std::string_view BeginningOf(std::string_view text, size_t limit) {
  if (text.size() <= limit) {
    return text;
  }
  while (limit > 0 && (text[limit] & 0xC0) == 0x80) {
    --limit;
  }
  return text.substr(0, limit);
}

std::string PreviewOf(const json_t* value, size_t limit, bool* isCut) {
  std::string text;
  if (json_is_string(value)) {
    text.assign(json_string_value(value), json_string_length(value));
  } else {
    // No further than it is shown: the whole text may be long.
    struct Beginning {
      std::string& text;
      size_t limit;
    } beginning{.text = text, .limit = limit};
    const auto append = [](const char* bytes, size_t size, void* data) {
      auto& [taken, most] = *static_cast<Beginning*>(data);
      taken.append(bytes, size);
      return taken.size() <= most ? 0 : -1;
    };
    json_dump_callback(value, append, &beginning, JSON_COMPACT | JSON_ENCODE_ANY);
  }
  const std::string_view shown = BeginningOf(text, limit);
  if (isCut != nullptr) {
    *isCut = shown.size() < text.size();
  }
  return std::string(shown);
}

}  // namespace ostrell
