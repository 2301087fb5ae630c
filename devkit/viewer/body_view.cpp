#include "devkit/viewer/body_view.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "base/fold_case.h"
#include "base/text.h"
#include "devkit/report_server/json_text.h"

namespace ostrell {
namespace {

// By which member the items of a body fall into sections.
constexpr std::array<std::pair<std::string_view, const char*>, 3> kSectionMembers = {
    {{"rc2", "fid"}, {"rc5", "product_name"}, {"rc7", "report_type"}}};
constexpr size_t kMaxPreview = 160;

const char* SectionMemberOf(std::string_view report) {
  const auto* const found =
      std::ranges::find(kSectionMembers, report, &decltype(kSectionMembers)::value_type::first);
  return found != kSectionMembers.end() ? found->second : "";
}

const char* TypeOf(const json_t* value) {
  constexpr std::array kNames = {"object", "array", "string", "integer",
                                 "real",   "true",  "false",  "null"};
  return kNames.at(static_cast<size_t>(json_typeof(value)));
}

size_t SizeOf(const json_t* value) {
  return json_is_object(value) ? json_object_size(value) : json_array_size(value);
}

// Without quotes around a text.
std::string TextOfValue(const json_t* value) {
  if (json_is_string(value)) {
    return {json_string_value(value), json_string_length(value)};
  }
  const JsonText text(json_dumps(value, JSON_COMPACT | JSON_ENCODE_ANY));
  return text ? text.Get() : "";
}

std::string SectionOf(const json_t* item, const char* member) {
  const json_t* const value = json_object_get(item, member);
  return value != nullptr ? TextOfValue(value) : "";
}

std::string Escaped(std::string_view name) {
  std::string escaped;
  for (const char letter : name) {
    escaped += letter == '~' ? "~0" : letter == '/' ? "~1" : std::string(1, letter);
  }
  return escaped;
}

std::string Unescaped(std::string_view token) {
  std::string name;
  for (size_t i = 0; i < token.size(); ++i) {
    const bool isEscape = token[i] == '~' && i + 1 < token.size();
    name += !isEscape ? token[i] : token[++i] == '1' ? '/' : '~';
  }
  return name;
}

const json_t* ElementAt(const json_t* array, std::string_view token) {
  size_t index = 0;
  const char* const end = token.data() + token.size();
  const auto [stop, error] = std::from_chars(token.data(), end, index);
  return error == std::errc() && stop == end ? json_array_get(array, index) : nullptr;
}

// A value of the body, the path of its kind, and the item that it belongs to.
struct Place {
  const json_t* value;
  std::string path{};
  const json_t* item = nullptr;
};

std::optional<Place> PlaceAt(const json_t* body, std::string_view pointer) {
  Place place{.value = body};
  while (!pointer.empty() && place.value != nullptr) {
    pointer.remove_prefix(1);
    const std::string_view token = pointer.substr(0, pointer.find('/'));
    pointer.remove_prefix(token.size());
    const bool isArray = json_is_array(place.value);
    place.value = isArray ? ElementAt(place.value, token)
                          : json_object_get(place.value, Unescaped(token).c_str());
    place.item = place.path.empty() && isArray ? place.value : place.item;
    place.path += isArray ? "/*" : "/" + std::string(token);
  }
  return place.value != nullptr ? std::optional(std::move(place)) : std::nullopt;
}

// At most `limit` bytes, whole characters.
std::string_view BeginningOf(std::string_view text, size_t limit) {
  if (text.size() <= limit) {
    return text;
  }
  while (limit > 0 && (text[limit] & 0xC0) == 0x80) {
    --limit;
  }
  return text.substr(0, limit);
}

void SetEntry(json_t* object, const Inventory& inventory, const InventoryEntry* entry) {
  json_object_set_new(
      object, "entry",
      entry != nullptr ? json_integer(entry - inventory.Entries().data()) : json_null());
}

class PartDescription {
 public:
  PartDescription(const Inventory& wanted, std::string_view ofReport, Place place,
                  const Part& shown)
      : inventory(wanted),
        report(ofReport),
        parent(std::move(place)),
        part(shown),
        kind(inventory.ItemKind(report, parent.item)),
        children(json_array()) {}

  JsonOwner Describe() {
    if (json_is_array(parent.value)) {
      DescribeElements();
    } else {
      const char* name = nullptr;
      json_t* member = nullptr;
      json_object_foreach(const_cast<json_t*>(parent.value), name, member) {
        Take(name, Escaped(name), member);
      }
    }
    JsonOwner described(json_object());
    json_object_set_new(described.Get(), "type", json_string(TypeOf(parent.value)));
    json_object_set_new(described.Get(), "size", json_integer(static_cast<json_int_t>(size)));
    json_object_set_new(described.Get(), "from", json_integer(static_cast<json_int_t>(part.from)));
    json_object_set_new(described.Get(), "children", children.Release());
    return described;
  }

 private:
  bool IsBody() const { return parent.path.empty(); }

  void DescribeElements() {
    const char* const member = SectionMemberOf(report);
    size_t index = 0;
    for (const json_t* const element : Elements(parent.value)) {
      const std::string name = std::to_string(index++);
      if (part.section.empty() || SectionOf(element, member) == part.section) {
        Take(name, name, element);
      }
    }
  }

  void Take(const std::string& name, const std::string& token, const json_t* value) {
    const size_t index = size++;
    if (index < part.from || index - part.from >= part.count) {
      return;
    }
    JsonOwner child(json_object());
    const bool isContainer = json_is_object(value) || json_is_array(value);
    bool isCut = false;
    const std::string text = PreviewOf(value, isContainer ? kMaxPreview : kMaxShownText, &isCut);
    json_object_set_new(child.Get(), "key", JsonString(name).Release());
    json_object_set_new(child.Get(), "at",
                        JsonString(std::string(part.at) + "/" + token).Release());
    json_object_set_new(child.Get(), "type", json_string(TypeOf(value)));
    json_object_set_new(child.Get(), "size", json_integer(static_cast<json_int_t>(SizeOf(value))));
    json_object_set_new(child.Get(), "text", JsonString(text).Release());
    json_object_set_new(child.Get(), "isCut", json_boolean(isCut));
    if (!IsBody() || !json_is_array(parent.value)) {
      SetEntry(child.Get(), inventory, EntryOf(token));
    }
    json_array_append_new(children.Get(), child.Release());
  }

  const InventoryEntry* EntryOf(const std::string& token) const {
    const std::string step = json_is_array(parent.value) ? "*" : token;
    return inventory.OfBody(report, kind, parent.path + "/" + step);
  }

  const Inventory& inventory;
  const std::string_view report;
  const Place parent;
  const Part& part;
  const std::string kind;
  JsonOwner children;
  size_t size = 0;
};

std::string PathOf(std::string_view pointer, const json_t* body) {
  const auto place = PlaceAt(body, pointer);
  return place ? place->path : std::string(pointer);
}

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
        pointer += "/" + Escaped(name);
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

JsonOwner DescribePart(const Inventory& inventory, std::string_view report, const json_t* body,
                       const Part& part) {
  auto place = PlaceAt(body, part.at);
  return place ? PartDescription(inventory, report, std::move(*place), part).Describe()
               : JsonOwner();
}

JsonOwner DescribeSections(const Inventory& inventory, std::string_view report,
                           const json_t* body) {
  struct Count {
    json_int_t items = 0;
    json_int_t bytes = 0;
    std::string at{};
  };
  const char* const member = SectionMemberOf(report);
  std::map<std::string, Count> sections;
  for (const json_t* const item : Elements(body)) {
    Count& count = sections[SectionOf(item, member)];
    ++count.items;
    count.bytes += static_cast<json_int_t>(json_dumpb(item, nullptr, 0, JSON_COMPACT));
  }
  std::map<std::string, Count> unknown;
  WalkBody(inventory, report, body,
           [&](std::string_view pointer, const json_t*, const InventoryEntry* entry) {
             if (entry == nullptr) {
               Count& count = unknown[PathOf(pointer, body)];
               count.at = count.items++ == 0 ? pointer : count.at;
             }
           });
  JsonOwner rows(json_array());
  for (const auto& [name, count] : sections) {
    json_array_append_new(rows.Get(),
                          json_pack("{s:o, s:I, s:I}", "name", JsonString(name).Release(), "count",
                                    count.items, "bytes", count.bytes));
  }
  JsonOwner paths(json_array());
  for (const auto& [path, count] : unknown) {
    if (json_array_size(paths.Get()) < kMaxUnknown) {
      json_array_append_new(
          paths.Get(), json_pack("{s:o, s:I, s:o}", "path", JsonString(path).Release(), "count",
                                 count.items, "at", JsonString(count.at).Release()));
    }
  }
  return JsonOwner(json_pack("{s:s, s:o, s:o}", "by", member, "sections", rows.Release(), "unknown",
                             paths.Release()));
}

std::string PreviewOf(const json_t* value, size_t limit, bool* isCut) {
  std::string text;
  if (json_is_string(value)) {
    text.assign(json_string_value(value), json_string_length(value));
  } else {
    // No further than it is shown: the whole text may be long.
    struct Beginning {
      std::string& text;
      size_t limit;
    } beginning{.text = text, .limit = limit};
    const auto append = [](const char* bytes, size_t size, void* data) {
      auto& [taken, most] = *static_cast<Beginning*>(data);
      taken.append(bytes, size);
      return taken.size() <= most ? 0 : -1;
    };
    json_dump_callback(value, append, &beginning, JSON_COMPACT | JSON_ENCODE_ANY);
  }
  const std::string_view shown = BeginningOf(text, limit);
  if (isCut != nullptr) {
    *isCut = shown.size() < text.size();
  }
  return std::string(shown);
}

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
