#pragma once

#include <cstddef>
#include <string_view>

#include "base/json.h"

namespace ostrell {

// Parses foreign JSON (RFC 8259) whose values may cost far more memory than their text: jansson
// takes some 220 bytes for the two of "{}".

// Elements are counted as opening brackets and commas outside of text, which is no less than half
// of the values. This many cost less than 64 MiB.
inline constexpr size_t kMaxJsonElements = size_t{1} << 18;

// Elements of a text, which need not be JSON.
size_t CountJsonElements(std::string_view text);

// The array or object that is the whole of `text`. Nothing for damaged text, without memory, and
// for one of more than `maxElements`, which is refused before anything is allocated.
JsonOwner ParseJson(std::string_view text, size_t maxElements = kMaxJsonElements);

}  // namespace ostrell
