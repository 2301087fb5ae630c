#pragma once

#include <jansson.h>

#include <string>

#include "base/owner.h"

namespace ostrell {

struct JsonTraits {
  using Handle = json_t*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle value) noexcept { json_decref(value); }
};

// One owned reference to a jansson value; text inside is UTF-8.
using JsonOwner = Owner<JsonTraits>;

// Text that jansson allocated; released by jansson's own function, whichever runtime it has.
struct JsonTextTraits {
  using Handle = char*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle text) noexcept {
    json_free_t release = nullptr;
    json_get_alloc_funcs(nullptr, &release);
    release(text);
  }
};
using JsonText = Owner<JsonTextTraits>;

// The array or object on one line without needless white space, members in the order they were set.
// Empty when there is none.
inline std::string CompactText(const JsonOwner& value) {
  const JsonText text(json_dumps(value.Get(), JSON_COMPACT));
  return text ? text.Get() : "";
}

}  // namespace ostrell
