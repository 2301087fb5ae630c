#include "devkit/viewer/body_view.h"

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "devkit/report_server/json_text.h"
#include "devkit/report_server/whole_number.h"
#include "devkit/viewer/shown_text.h"

namespace ostrell {
namespace {

// By which member the items of a body fall into sections.
constexpr std::array<std::pair<std::string_view, const char*>, 3> kSectionMembers = {
    {{"rc2", "fid"}, {"rc5", "product_name"}, {"rc7", "report_type"}}};

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

std::string SectionOf(const json_t* item, const char* member) {
  const json_t* const value = json_object_get(item, member);
  return value != nullptr ? TextOfValue(value) : "";
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
  const auto index = WholeNumber<size_t>(token);
  return index ? json_array_get(array, *index) : nullptr;
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
        Take(name, member);
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
        Take(name, element);
      }
    }
  }

  void Take(const std::string& name, const json_t* value) {
    const size_t index = size++;
    if (index < part.from || index - part.from >= part.count) {
      return;
    }
    JsonOwner child(json_object());
    const bool isContainer = json_is_object(value) || json_is_array(value);
    bool isCut = false;
    const std::string text = PreviewOf(value, isContainer ? kMaxPreview : kMaxShownText, &isCut);
    json_object_set_new(child.Get(), "key", JsonString(name).Release());
    std::string at(part.at);
    AppendMember(at, name);
    json_object_set_new(child.Get(), "at", JsonString(at).Release());
    json_object_set_new(child.Get(), "type", json_string(TypeOf(value)));
    json_object_set_new(child.Get(), "size", json_integer(static_cast<json_int_t>(SizeOf(value))));
    json_object_set_new(child.Get(), "text", JsonString(text).Release());
    json_object_set_new(child.Get(), "isCut", json_boolean(isCut));
    if (!IsBody() || !json_is_array(parent.value)) {
      SetEntry(child.Get(), inventory, EntryOf(name));
    }
    json_array_append_new(children.Get(), child.Release());
  }

  const InventoryEntry* EntryOf(const std::string& name) const {
    std::string path = parent.path;
    AppendMember(path, json_is_array(parent.value) ? "*" : name);
    return inventory.OfBody(report, kind, path);
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

}  // namespace ostrell
