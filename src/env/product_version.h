#pragma once

#include <cstdint>

#include "base/bounded_text.h"

namespace ostrell {

struct Run;

// At most 15 ASCII characters.
using ProductVersionText = BoundedText<char, 16>;

// The text of the file "VERSION" in the install folder, up to its first zero and without the blanks
// at its ends. Returns 1 when it was read and is a dotted number list, 0 otherwise; a text that is
// no such list stays in `version` all the same. Empty when the file is missing, is open for writing
// elsewhere, or has 16 bytes or more: it is refused, not cut.
int32_t ReadProductVersion(const Run& run, ProductVersionText& version);

}  // namespace ostrell
