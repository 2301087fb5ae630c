#pragma once

#include <cstddef>
#include <string_view>

#include "base/json.h"

namespace ostrell {

// Where a text stands in the keys, texts and numbers of a body, letters of every alphabet in any
// case: {"count", "places": [{"at", "text"}]}, the first kMaxPlaces of them. An empty text stands
// nowhere.
JsonOwner FindInDocument(const json_t* body, std::string_view text);
// The same in bytes, as UTF-8 and as UTF-16, ASCII letters in any case; "at" is an offset.
JsonOwner FindInBytes(std::string_view bytes, std::string_view text);
inline constexpr size_t kMaxPlaces = 20;

}  // namespace ostrell
