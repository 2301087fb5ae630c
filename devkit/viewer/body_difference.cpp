#include "devkit/viewer/body_difference.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "devkit/report_server/json_text.h"
#include "devkit/viewer/shown_text.h"

namespace ostrell {
namespace {

std::vector<const json_t*> ItemsOf(const json_t* body) {
  std::vector<const json_t*> items;
  for (const json_t* const item : Elements(body)) {
    items.push_back(item);
  }
  if (!json_is_array(body)) {
    items.push_back(body);
  }
  return items;
}

// The members that have one value in all items, by name; the values are borrowed.
using Members = std::map<std::string, const json_t*>;

Members CommonOf(const std::vector<const json_t*>& items) {
  Members common;
  const char* name = nullptr;
  json_t* value = nullptr;
  if (!items.empty()) {
    json_object_foreach(const_cast<json_t*>(items.front()), name, value) {
      common[name] = value;
    }
  }
  for (const json_t* const item : items) {
    std::erase_if(common, [item](const auto& member) {
      return json_equal(json_object_get(item, member.first.c_str()), member.second) == 0;
    });
  }
  return common;
}

// Items by their text without the members named, whatever the order of the rest.
using Texts = std::multimap<std::string, const json_t*>;

Texts ByText(const std::vector<const json_t*>& items, const Members& without) {
  Texts byText;
  for (const json_t* const item : items) {
    const JsonOwner rest(json_copy(const_cast<json_t*>(item)));
    for (const auto& [name, value] : without) {
      json_object_del(rest.Get(), name.c_str());
    }
    const JsonText text(json_dumps(rest.Get(), JSON_COMPACT | JSON_SORT_KEYS | JSON_ENCODE_ANY));
    byText.emplace(text ? text.Get() : "", item);
  }
  return byText;
}

std::vector<Texts::value_type> OnlyIn(const Texts& one, const Texts& other) {
  std::vector<Texts::value_type> only;
  std::ranges::set_difference(
      one, other, std::back_inserter(only),
      [](const auto& left, const auto& right) { return left.first < right.first; });
  return only;
}

JsonOwner Shown(const json_t* value) {
  return value != nullptr ? JsonString(PreviewOf(value, kMaxShownText)) : JsonOwner(json_null());
}

JsonOwner Described(const std::vector<Texts::value_type>& items) {
  JsonOwner list(json_array());
  for (const auto& [text, item] : items) {
    if (json_array_size(list.Get()) < kMaxDifferences) {
      json_array_append_new(list.Get(), Shown(item).Release());
    }
  }
  return JsonOwner(
      json_pack("{s:I, s:o}", "count", json_int_t(items.size()), "items", list.Release()));
}

}  // namespace

JsonOwner DescribeMemberDifference(const json_t* older, const json_t* newer) {
  Members names = CommonOf({newer});
  names.merge(CommonOf({older}));
  JsonOwner rows(json_array());
  for (const auto& [name, value] : names) {
    const json_t* const before = json_object_get(older, name.c_str());
    const json_t* const after = json_object_get(newer, name.c_str());
    if (before == nullptr || after == nullptr || json_equal(before, after) == 0) {
      json_array_append_new(rows.Get(),
                            json_pack("{s:o, s:o, s:o}", "key", JsonString(name).Release(), "older",
                                      Shown(before).Release(), "newer", Shown(after).Release()));
    }
  }
  return rows;
}

JsonOwner DescribeBodyDifference(const json_t* older, const json_t* newer) {
  const auto olderItems = ItemsOf(older);
  const auto newerItems = ItemsOf(newer);
  const Members ofOlder = CommonOf(olderItems);
  const Members ofNewer = CommonOf(newerItems);
  Members common;
  const JsonOwner olderMembers(json_object());
  const JsonOwner newerMembers(json_object());
  for (const auto& [name, value] : ofNewer) {
    if (ofOlder.contains(name)) {
      common[name] = value;
      json_object_set(olderMembers.Get(), name.c_str(), const_cast<json_t*>(ofOlder.at(name)));
      json_object_set(newerMembers.Get(), name.c_str(), const_cast<json_t*>(value));
    }
  }
  const Texts olderTexts = ByText(olderItems, common);
  const Texts newerTexts = ByText(newerItems, common);
  const auto removed = OnlyIn(olderTexts, newerTexts);
  const auto added = OnlyIn(newerTexts, olderTexts);
  return JsonOwner(
      json_pack("{s:o, s:I, s:o, s:o}", "members",
                DescribeMemberDifference(olderMembers.Get(), newerMembers.Get()).Release(), "equal",
                json_int_t(olderTexts.size() - removed.size()), "removed",
                Described(removed).Release(), "added", Described(added).Release()));
}

JsonOwner DescribeByteDifference(std::string_view older, std::string_view newer) {
  const auto first = std::ranges::mismatch(older, newer).in1 - older.begin();
  return JsonOwner(json_pack("{s:I, s:I, s:o}", "older", json_int_t(older.size()), "newer",
                             json_int_t(newer.size()), "first",
                             older == newer ? json_null() : json_integer(first)));
}

}  // namespace ostrell
