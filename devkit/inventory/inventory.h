#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/json.h"

namespace ostrell {

// docs/data-inventory.json: every value that can leave the machine. Its schema, which lies beside
// it, says what an entry holds.

// One value that can leave. The texts are the inventory's.
struct InventoryEntry {
  std::string_view report;  // "rc1" to "rc5", "rc7"
  // JSON pointer into the body, with "*" for each index; "?KEY" of a query; "header NAME"; "body"
  // where the whole body is the value.
  std::string_view path;
  // What the entry is true of, where that is not all of its report; else both are empty: "request"
  // and "question", "ticket" or "upload", or a member of the body's items ("/*/fid") and its value.
  std::string_view kindOf;
  std::string_view kind;
  // Covers what has no entry of its own among the members of the object that holds it, and
  // everything below these; of header lines ("header *") those that a ticket names.
  bool isOpen;
  bool isRare;        // a run of the sample product does not bring it
  const json_t* row;  // the entry in the document
};

class Inventory {
 public:
  // Nothing, with one line of text in `why`, for a text that is no inventory: no JSON, an entry
  // without report or path, two entries of one value, a path that ends in "*" and is not open or
  // the other way round, items of one report whose kind depends on several members.
  static std::optional<Inventory> Parse(std::string_view json, std::string* why);

  const std::vector<InventoryEntry>& Entries() const { return entries; }
  const json_t* Document() const { return document.Get(); }

  // The entry of a value of `report`, null when it has none. `kind` is that of the item (ItemKind)
  // or the request, `path` as in an entry.
  const InventoryEntry* OfBody(std::string_view report, std::string_view kind,
                               std::string_view path) const;
  const InventoryEntry* OfQuery(std::string_view report, std::string_view request,
                                std::string_view key) const;
  const InventoryEntry* OfHeader(std::string_view report, std::string_view request,
                                 std::string_view name) const;

  // What tells the kind of an item of that report's body: text, or a number in decimal. Empty where
  // items have no kinds, or this one has none.
  std::string ItemKind(std::string_view report, const json_t* item) const;

  // The entry with exactly that report and path, `key` being both in a row: "rc7/*/name".
  const InventoryEntry* Exactly(std::string_view key, std::string_view kind) const;

 private:
  explicit Inventory(JsonOwner parsed) : document(std::move(parsed)) {}
  // False, with a text, when it contradicts those before.
  bool Add(const InventoryEntry& entry, std::string* why);

  struct KeyHash {
    using is_transparent = void;
    size_t operator()(std::string_view key) const { return std::hash<std::string_view>()(key); }
  };

  JsonOwner document;
  std::vector<InventoryEntry> entries;
  std::unordered_map<std::string, std::vector<const InventoryEntry*>, KeyHash, std::equal_to<>>
      byKey;
  std::map<std::string_view, std::string_view> kindMembers;  // of items, by report
};

// Appends the step to a member of that name to a JSON pointer (RFC 6901).
void AppendMember(std::string& pointer, std::string_view name);

// A value that leaves with a body, where it stands (JSON pointer), and its entry; null: it has
// none.
using TakeValue =
    std::function<void(std::string_view pointer, const json_t* value, const InventoryEntry* entry)>;

// Calls `take` for every value of a JSON body of `report`, depth-first: members of objects,
// elements of arrays, and what holds them before these. The body and its items are taken only where
// they are neither object nor array. The depth is at most what jansson parses.
void WalkBody(const Inventory& inventory, std::string_view report, const json_t* body,
              const TakeValue& take);

}  // namespace ostrell
