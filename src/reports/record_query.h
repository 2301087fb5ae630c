#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "base/json.h"
#include "env/run.h"

namespace ostrell {

// Descriptors of queries of the product's record store, for the detection-record reports: an object
// with conditions under "c" and the order, newest first, under "o". Times are seconds since 1970
// and both ends of a range belong to it. Nothing when there is no memory.

JsonOwner RecordsInRange(int64_t start, int64_t end);

// Of these, the records whose "fid" is one of `ids`; without ids none.
JsonOwner RecordsInRangeWithIds(int64_t start, int64_t end, std::span<const int32_t> ids);

// Of these, the records whose "fid" is below zero.
JsonOwner RecordsInRangeWithNegativeId(int64_t start, int64_t end);

// Runs the query that `describe` describes in the record store of the product's data path. The
// records, at least one; nothing when the store does not open, refuses the descriptor or finds no
// record, and when memory was short meanwhile: a condition may be missing.
JsonOwner RunRecordQuery(const Run& run, const std::function<JsonOwner()>& describe);

}  // namespace ostrell
