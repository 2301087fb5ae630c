#pragma once

#include <string_view>

#include "base/json.h"

namespace ostrell {

// A JSON string of any bytes: where they are not UTF-8, each byte past ASCII becomes "?".
JsonOwner JsonString(std::string_view text);

}  // namespace ostrell
