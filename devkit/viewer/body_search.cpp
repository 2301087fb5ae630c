#include "devkit/viewer/body_search.h"

#include <algorithm>
#include <string>

#include "base/fold_case.h"
#include "base/text.h"
#include "devkit/inventory/inventory.h"
#include "devkit/report_server/json_text.h"
#include "devkit/viewer/shown_text.h"

namespace ostrell {
namespace {

std::u32string Folded(std::string_view text) {
  std::u32string folded;
  folded.reserve(text.size());
  while (!text.empty()) {
    const Utf8Character first = FirstCharacter(text);
    folded += FoldCase(first.code);
    text.remove_prefix(first.length);
  }
  return folded;
}

// Texts that are looked for, and the places where they stand.
class Places {
 public:
  void Add(json_t* at, std::string_view text) {
    ++count;
    if (json_array_size(list.Get()) < kMaxPlaces) {
      JsonOwner place(json_object());
      json_object_set_new(place.Get(), "at", at);
      json_object_set_new(place.Get(), "text",
                          JsonString(BeginningOf(text, kMaxPreview)).Release());
      json_array_append_new(list.Get(), place.Release());
    } else {
      json_decref(at);
    }
  }

  JsonOwner Describe() {
    JsonOwner found(json_object());
    json_object_set_new(found.Get(), "count", json_integer(count));
    json_object_set_new(found.Get(), "places", list.Release());
    return found;
  }

 private:
  json_int_t count = 0;
  JsonOwner list{json_array()};
};

class DocumentSearch {
 public:
  DocumentSearch(std::string_view text, Places& found) : wanted(Folded(text)), places(found) {}

  // NOLINTNEXTLINE(misc-no-recursion): as deep as jansson parses.
  void Search(const json_t* value) {
    const size_t length = pointer.size();
    if (json_is_object(value)) {
      const char* name = nullptr;
      json_t* member = nullptr;
      json_object_foreach(const_cast<json_t*>(value), name, member) {
        AppendMember(pointer, name);
        Look(name);
        Search(member);
        pointer.resize(length);
      }
    } else if (json_is_array(value)) {
      size_t index = 0;
      for (const json_t* const element : Elements(value)) {
        pointer += "/" + std::to_string(index++);
        Search(element);
        pointer.resize(length);
      }
    } else {
      Look(TextOfValue(value));
    }
  }

 private:
  void Look(std::string_view text) {
    if (Folded(text).find(wanted) != std::u32string::npos) {
      places.Add(JsonString(pointer).Release(), text);
    }
  }

  const std::u32string wanted;
  Places& places;
  std::string pointer;
};

void FindEncoded(std::string_view bytes, std::string_view encoded, std::string_view text,
                 Places& places) {
  const auto isSame = [](char left, char right) { return LowerAscii(left) == LowerAscii(right); };
  auto at = bytes.begin();
  while ((at = std::search(at, bytes.end(), encoded.begin(), encoded.end(), isSame)) !=
         bytes.end()) {
    places.Add(json_integer(at - bytes.begin()), text);
    ++at;
  }
}

std::string Utf16Of(std::string_view text) {
  std::string encoded;
  while (!text.empty()) {
    const Utf8Character first = FirstCharacter(text);
    text.remove_prefix(first.length);
    const char32_t code = first.code;
    const auto append = [&encoded](char32_t unit) {
      encoded += static_cast<char>(unit & 0xFF);
      encoded += static_cast<char>(unit >> 8);
    };
    if (code < 0x10000) {
      append(code);
    } else {
      append(0xD800 + ((code - 0x10000) >> 10));
      append(0xDC00 + ((code - 0x10000) & 0x3FF));
    }
  }
  return encoded;
}

}  // namespace

JsonOwner FindInDocument(const json_t* body, std::string_view text) {
  Places places;
  if (!text.empty()) {
    DocumentSearch(text, places).Search(body);
  }
  return places.Describe();
}

JsonOwner FindInBytes(std::string_view bytes, std::string_view text) {
  Places places;
  if (!text.empty()) {
    FindEncoded(bytes, text, text, places);
    FindEncoded(bytes, Utf16Of(text), text, places);
  }
  return places.Describe();
}

}  // namespace ostrell
