#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "base/json.h"
#include "devkit/inventory/inventory.h"

namespace ostrell {

// A JSON body in pieces that a page can show, whatever its size. `entry` is always the index of the
// inventory's entry for a value, null where it has none; it is absent where none is looked for,
// which is the body itself and its items.

// Which part of a value's members or elements.
struct Part {
  std::string_view at{};       // the value, as a JSON pointer (RFC 6901)
  std::string_view section{};  // of the body's items only those of this section; empty for all
  size_t from = 0;
  size_t count = 0;
};

// {"type", "size", "from", "children": [{"key", "at", "type", "size", "text", "isCut", "entry"}]};
// "size" counts the members or elements (of the section), "text" is a scalar, or the beginning of
// what another value holds (shown_text.h). Null when there is no such value.
JsonOwner DescribePart(const Inventory& inventory, std::string_view report, const json_t* body,
                       const Part& part);

// The items of a body by their kind: {"by": the member that tells it, "sections": [{"name",
// "count", "bytes"}], "unknown": [{"path", "count", "at"}]}. "bytes" are those of the items'
// compact text; "unknown" are the values without an entry, by their path with "*" for indices, the
// first kMaxUnknown of them, and where one of them is.
JsonOwner DescribeSections(const Inventory& inventory, std::string_view report, const json_t* body);
inline constexpr size_t kMaxUnknown = 100;

}  // namespace ostrell
