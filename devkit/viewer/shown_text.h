#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "base/json.h"

namespace ostrell {

// What a page shows of a value, which may be of any size.

inline constexpr size_t kMaxShownText = 4096;  // bytes of a scalar
inline constexpr size_t kMaxPreview = 160;     // of what a container, or a place, begins with

// The value's compact text, a text without its quotes.
std::string TextOfValue(const json_t* value);

// Its beginning: at most `limit` bytes of whole characters. `isCut` may be null.
std::string PreviewOf(const json_t* value, size_t limit, bool* isCut = nullptr);

// The same of UTF-8 text.
std::string_view BeginningOf(std::string_view text, size_t limit);

}  // namespace ostrell
