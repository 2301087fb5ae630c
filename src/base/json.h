#pragma once

#include <jansson.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

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
// Empty when there is none or its text cannot be made.
inline std::string CompactText(const JsonOwner& value) {
  const JsonText text(json_dumps(value.Get(), JSON_COMPACT));
  return text ? text.Get() : "";
}

// The array when it has an element, else nothing.
inline JsonOwner UnlessEmpty(JsonOwner array) {
  return json_array_size(array.Get()) > 0 ? std::move(array) : JsonOwner();
}

// The elements of an array, borrowed, in their order; none of anything else.
//
//   for (json_t* const record : Elements(records.Get())) {
class Elements {
 public:
  explicit Elements(const json_t* walked) : array(walked) {}

  class Iterator {
   public:
    explicit Iterator(const json_t* walked) : array(walked) {}
    json_t* operator*() const { return json_array_get(array, index); }
    void operator++() { ++index; }
    bool operator==(std::default_sentinel_t) const { return index >= json_array_size(array); }

   private:
    const json_t* array;
    size_t index = 0;
  };
  Iterator begin() const { return Iterator(array); }
  std::default_sentinel_t end() const { return {}; }

 private:
  const json_t* array;
};

// Members of an object as json_unpack reads them, which would allocate for every key: nothing when
// `object` is none, or the member is missing or of another type. The text lives as long as the
// member.
inline std::optional<int64_t> Integer64Member(const json_t* object, const char* key) {
  const json_t* const value = json_object_get(object, key);
  return json_is_integer(value) ? std::optional<int64_t>(json_integer_value(value)) : std::nullopt;
}

// The low 32 bits of an integer of any size.
inline std::optional<int32_t> IntegerMember(const json_t* object, const char* key) {
  const auto value = Integer64Member(object, key);
  return value ? std::optional(static_cast<int32_t>(*value)) : std::nullopt;
}

inline std::optional<std::string_view> TextMember(const json_t* object, const char* key) {
  const json_t* const value = json_object_get(object, key);
  return json_is_string(value)
             ? std::optional(std::string_view(json_string_value(value), json_string_length(value)))
             : std::nullopt;
}

}  // namespace ostrell
