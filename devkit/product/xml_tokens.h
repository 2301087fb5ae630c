#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrell {

// One piece of an XML text.
struct XmlToken {
  enum class Kind { kStart, kEnd, kText };
  Kind kind = Kind::kText;
  std::string text;  // an element's name, or the text itself with its references decoded
  std::map<std::string, std::string> attributes = {};  // of a start
};

// The pieces of a text that holds one element (XML 1.0 of the W3C). An element without content is a
// start and an end; text of blanks only is left out. Nothing for text that is empty or not well
// formed, and for what event logs do not use: declarations, comments, CDATA sections, names past
// ASCII, and references past "&#65535;".
std::optional<std::vector<XmlToken>> XmlTokens(std::string_view text);

// The number that `text`, blanks at its ends aside, is in decimal; nothing for other text.
std::optional<uint64_t> DecimalNumber(std::string_view text);

}  // namespace ostrell
