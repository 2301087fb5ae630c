#pragma once

#include <cstddef>
#include <string_view>

#include "base/json.h"

namespace ostrell {

// How two bodies of one report differ. Members that have one value in all items of a body, such as
// the client fields, are compared once:
//
//   "members"  [{"key", "older", "newer"}], those of which the value differs
//   "equal"    how many items are in both, these members left out
//   "removed"  {"count", "items"}: those in the older body only, the first kMaxDifferences as text,
//              its first kMaxShownText bytes; so are the values of "members"
//   "added"    the same of the newer one
//
// A body that is no array counts as its only item.
JsonOwner DescribeBodyDifference(const json_t* older, const json_t* newer);
inline constexpr size_t kMaxDifferences = 500;

// Of two objects the members of which the value differs, or that only one of them has: [{"key",
// "older", "newer"}], null for none.
JsonOwner DescribeMemberDifference(const json_t* older, const json_t* newer);

// Of two bodies that are no JSON: {"older", "newer": sizes, "first": the offset from which on
// they differ, null where they are equal}.
JsonOwner DescribeByteDifference(std::string_view older, std::string_view newer);

}  // namespace ostrell
