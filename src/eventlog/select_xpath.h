#pragma once

#include <optional>
#include <string>
#include <vector>

#include "eventlog/filters.h"

namespace eventlog {

// The text of a query, in the XPath subset and the XML form that the vendor documents for EvtQuery
// ("Consuming Events", structured queries).

// The condition that goes inside "*[System[...]]": provider, then each child of `composite` that
// can be put into words. The others are appended to `inMemoryFilters`, which borrows them.
// Comparing signs stand as XML entities. The provider is inserted as it stands. Empty when nothing
// narrows.
//
// The word "and" belongs to an upper bound, also where there is no lower one.
std::wstring BuildSelectXPath(const std::wstring& provider, const CompositeFilter& composite,
                              std::vector<const EventFilter*>& inMemoryFilters);

// The whole document for one channel; nothing when it would not fit 4096 characters with its
// terminator.
std::optional<std::wstring> BuildQueryDocument(const std::wstring& channel,
                                               const std::wstring& condition);

}  // namespace eventlog
