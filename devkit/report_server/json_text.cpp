#include "devkit/report_server/json_text.h"

#include <algorithm>

namespace ostrell {

JsonOwner JsonString(std::string_view text) {
  JsonOwner value(json_stringn(text.data(), text.size()));
  if (!value) {
    std::string ascii(text);
    std::ranges::replace_if(
        ascii, [](char byte) { return (byte & 0x80) != 0; }, '?');
    value.Reset(json_stringn(ascii.data(), ascii.size()));
  }
  return value;
}

}  // namespace ostrell
