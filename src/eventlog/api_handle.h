#pragma once

#include "base/owner.h"

namespace eventlog {

// A handle with the table of functions that it belongs to, which closes it.
template <class Api>
struct ApiHandleTraits {
  struct Handle {
    void* value = nullptr;
    const Api* api = nullptr;
    bool operator==(const Handle& other) const { return value == other.value; }
  };
  static Handle Empty() { return {}; }
  static void Close(Handle handle) noexcept { handle.api->close(handle.value); }
};
template <class Api>
using ApiHandle = ostrell::Owner<ApiHandleTraits<Api>>;

}  // namespace eventlog
