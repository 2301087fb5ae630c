#pragma once

#include <string>
#include <string_view>

#include "base/json.h"

namespace ostrell {

// A JSON string of any bytes: where they are not UTF-8, each byte past ASCII becomes "?".
JsonOwner JsonString(std::string_view text);

// The value on one line without needless white space, members in the order they were set. Empty
// when there is no value.
std::string CompactText(const json_t* value);

}  // namespace ostrell
