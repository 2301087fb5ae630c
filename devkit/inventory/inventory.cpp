#include "devkit/inventory/inventory.h"

#include <algorithm>
#include <utility>

namespace ostrell {
namespace {

constexpr std::string_view kRequest = "request";
constexpr std::string_view kHeader = "header ";
constexpr std::string_view kAny = "/*";

std::string_view Text(const json_t* object, const char* name) {
  return TextMember(object, name).value_or(std::string_view());
}

InventoryEntry EntryOf(const json_t* row) {
  const json_t* const kind = json_object_get(row, "kind");
  return {.report = Text(row, "report"),
          .path = Text(row, "path"),
          .kindOf = Text(kind, "of"),
          .kind = Text(kind, "is"),
          .isOpen = json_is_true(json_object_get(row, "open")),
          .isRare = json_object_get(row, "rare") != nullptr,
          .row = row};
}

std::string Joined(std::string_view report, std::string_view mark, std::string_view name) {
  return std::string(report).append(mark).append(name);
}

bool IsContainer(const json_t* value) {
  return json_is_object(value) || json_is_array(value);
}

class BodyWalk {
 public:
  BodyWalk(const Inventory& wanted, std::string_view ofReport, const TakeValue& taker)
      : inventory(wanted), report(ofReport), take(taker), key(ofReport) {}

  // The items of the body, each with the kind that it has.
  void TakeBody(const json_t* body) {
    if (!json_is_array(body)) {
      TakeTop(body);
      return;
    }
    size_t index = 0;
    for (const json_t* const item : Elements(body)) {
      kind = inventory.ItemKind(report, item);
      key.append(kAny);
      pointer = "/" + std::to_string(index++);
      TakeTop(item);
      key.resize(report.size());
    }
  }

 private:
  // The body or one of its items.
  void TakeTop(const json_t* value) {
    if (IsContainer(value)) {
      TakeBelow(value, nullptr);
    } else {
      take(pointer, value, nullptr);
    }
  }

  // `open` is the open entry that covers what is below, null for none.
  void TakeBelow(const json_t* value, const InventoryEntry* open) {
    const size_t keyLength = key.size();
    const InventoryEntry* const ofAll = inventory.Exactly(key.append(kAny), kind);
    open = ofAll != nullptr ? ofAll : open;
    size_t index = 0;
    for (json_t* const element : Elements(value)) {
      TakeOne("/" + std::to_string(index++), element, open, open);
    }
    key.resize(keyLength);
    const char* name = nullptr;
    json_t* member = nullptr;
    json_object_foreach(const_cast<json_t*>(value), name, member) {
      AppendMember(key, name);
      const InventoryEntry* const own = inventory.Exactly(key, kind);
      TakeOne(std::string_view(key).substr(keyLength), member, own != nullptr ? own : open, open);
      key.resize(keyLength);
    }
  }

  void TakeOne(std::string_view step, const json_t* value, const InventoryEntry* entry,
               const InventoryEntry* open) {
    const size_t length = pointer.size();
    pointer.append(step);
    take(pointer, value, entry);
    if (IsContainer(value)) {
      TakeBelow(value, open);
    }
    pointer.resize(length);
  }

  const Inventory& inventory;
  const std::string_view report;
  const TakeValue& take;
  std::string kind;     // of the item at hand
  std::string pointer;  // of the value at hand
  std::string key;      // report and path of the value at hand
};

}  // namespace

void AppendMember(std::string& pointer, std::string_view name) {
  pointer += '/';
  for (const char character : name) {
    if (character == '~' || character == '/') {
      pointer += character == '~' ? "~0" : "~1";
    } else {
      pointer += character;
    }
  }
}

std::optional<Inventory> Inventory::Parse(std::string_view json, std::string* why) {
  json_error_t error;
  Inventory inventory(JsonOwner(json_loadb(json.data(), json.size(), 0, &error)));
  if (!inventory.document) {
    *why = "line " + std::to_string(error.line) + ": " + error.text;
    return std::nullopt;
  }
  const json_t* const rows = json_object_get(inventory.Document(), "entries");
  for (const json_t* const row : Elements(rows)) {
    inventory.entries.push_back(EntryOf(row));
  }
  for (const InventoryEntry& entry : inventory.entries) {
    if (!inventory.Add(entry, why)) {
      *why += Joined(entry.report, " ", entry.path);
      return std::nullopt;
    }
  }
  *why = inventory.entries.empty() ? "no entries" : "";
  return why->empty() ? std::optional(std::move(inventory)) : std::nullopt;
}

bool Inventory::Add(const InventoryEntry& entry, std::string* why) {
  std::vector<const InventoryEntry*>& known = byKey[Joined(entry.report, "", entry.path)];
  const bool isKnown = std::ranges::any_of(known, [&entry](const InventoryEntry* other) {
    return other->kindOf == entry.kindOf && other->kind == entry.kind;
  });
  known.push_back(&entry);
  if (entry.report.empty() || entry.path.empty()) {
    *why = "no report or no path: ";
  } else if (isKnown) {
    *why = "two entries of one value: ";
  } else if (entry.isOpen != entry.path.ends_with('*')) {
    *why = "a path ends in * where it is open, and only there: ";
  } else if (!entry.kindOf.empty() && entry.kindOf != kRequest &&
             kindMembers.try_emplace(entry.report, entry.kindOf).first->second != entry.kindOf) {
    *why = "the kind of items depends on several members: ";
  } else {
    return true;
  }
  return false;
}

const InventoryEntry* Inventory::Exactly(std::string_view key, std::string_view kind) const {
  const auto found = byKey.find(key);
  if (found == byKey.end()) {
    return nullptr;
  }
  const InventoryEntry* ofAll = nullptr;
  for (const InventoryEntry* const entry : found->second) {
    if (!entry->kindOf.empty() && entry->kind == kind) {
      return entry;
    }
    ofAll = entry->kindOf.empty() ? entry : ofAll;
  }
  return ofAll;
}

const InventoryEntry* Inventory::OfBody(std::string_view report, std::string_view kind,
                                        std::string_view path) const {
  if (const InventoryEntry* const entry = Exactly(Joined(report, "", path), kind)) {
    return entry;
  }
  for (size_t slash = path.rfind('/'); slash != std::string_view::npos; slash = path.rfind('/')) {
    path = path.substr(0, slash);
    if (const InventoryEntry* const open = Exactly(Joined(report, path, kAny), kind)) {
      return open;
    }
  }
  return nullptr;
}

const InventoryEntry* Inventory::OfQuery(std::string_view report, std::string_view request,
                                         std::string_view key) const {
  return Exactly(Joined(report, "?", key), request);
}

const InventoryEntry* Inventory::OfHeader(std::string_view report, std::string_view request,
                                          std::string_view name) const {
  const InventoryEntry* const entry = Exactly(Joined(report, kHeader, name), request);
  return entry != nullptr ? entry : Exactly(Joined(report, kHeader, "*"), request);
}

std::string Inventory::ItemKind(std::string_view report, const json_t* item) const {
  const auto found = kindMembers.find(report);
  if (found == kindMembers.end()) {
    return {};
  }
  const std::string name(found->second.substr(found->second.rfind('/') + 1));
  const auto number = Integer64Member(item, name.c_str());
  return number ? std::to_string(*number) : std::string(Text(item, name.c_str()));
}

void WalkBody(const Inventory& inventory, std::string_view report, const json_t* body,
              const TakeValue& take) {
  if (body != nullptr) {
    BodyWalk(inventory, report, take).TakeBody(body);
  }
}

}  // namespace ostrell
