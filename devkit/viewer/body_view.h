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
// what another value holds, at most kMaxShownText bytes. Null when there is no such value.
JsonOwner DescribePart(const Inventory& inventory, std::string_view report, const json_t* body,
                       const Part& part);
inline constexpr size_t kMaxShownText = 4096;

// The items of a body by their kind: {"by": the member that tells it, "sections": [{"name",
// "count", "bytes"}], "unknown": [{"path", "count", "at"}]}. "bytes" are those of the items'
// compact text; "unknown" are the values without an entry, by their path with "*" for indices, the
// first kMaxUnknown of them, and where one of them is.
JsonOwner DescribeSections(const Inventory& inventory, std::string_view report, const json_t* body);
inline constexpr size_t kMaxUnknown = 100;

// The beginning of a value's compact text, of a text without its quotes; at most `limit` bytes of
// whole characters. `isCut` may be null.
std::string PreviewOf(const json_t* value, size_t limit, bool* isCut = nullptr);

// Where a text stands in the keys, texts and numbers of a body, letters of every alphabet in any
// case: {"count", "places": [{"at", "text"}]}, the first kMaxPlaces of them. An empty text stands
// nowhere.
JsonOwner FindInDocument(const json_t* body, std::string_view text);
// The same in bytes, as UTF-8 and as UTF-16, ASCII letters in any case; "at" is an offset.
JsonOwner FindInBytes(std::string_view bytes, std::string_view text);
inline constexpr size_t kMaxPlaces = 20;

}  // namespace ostrell
