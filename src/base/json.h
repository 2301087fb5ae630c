#pragma once

#include <jansson.h>

#include "base/owner.h"

namespace ostrell {

struct JsonTraits {
  using Handle = json_t*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle value) noexcept { json_decref(value); }
};

// One owned reference to a jansson value; text inside is UTF-8.
using JsonOwner = Owner<JsonTraits>;

}  // namespace ostrell
