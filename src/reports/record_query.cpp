#include "reports/record_query.h"

#include <utility>

#include "base/json_memory.h"

namespace ostrell {
namespace {

JsonOwner TimeRange(int64_t start, int64_t end) {
  return JsonOwner(json_pack("{s:s,s:s,s:{s:I, s:I}}", "c", "><", "n", "ts", "v", "l",
                             json_int_t{start}, "r", json_int_t{end}));
}

// The conditions are an array; one that could not be made is left out. A packing that fails
// half-way takes nothing over ("O", not "o").
JsonOwner Descriptor(JsonOwner first, JsonOwner second = {}) {
  JsonOwner conditions(json_array());
  json_array_append_new(conditions.Get(), first.Release());
  json_array_append_new(conditions.Get(), second.Release());
  return conditions ? JsonOwner(json_pack("{s:O, s:[{s:s, s:s}]}", "c", conditions.Get(), "o", "n",
                                          "ts", "t", "DESC"))
                    : JsonOwner();
}

}  // namespace

JsonOwner RecordsInRange(int64_t start, int64_t end) {
  return Descriptor(TimeRange(start, end));
}

JsonOwner RecordsInRangeWithIds(int64_t start, int64_t end, std::span<const int32_t> ids) {
  JsonOwner list(json_array());
  for (const int32_t id : ids) {
    json_array_append_new(list.Get(), json_integer(id));
  }
  return Descriptor(TimeRange(start, end),
                    JsonOwner(json_pack("{s:s,s:s,s:O}", "c", "in", "n", "fid", "v", list.Get())));
}

JsonOwner RecordsInRangeWithNegativeId(int64_t start, int64_t end) {
  return Descriptor(TimeRange(start, end),
                    JsonOwner(json_pack("{s:s,s:s,s:i}", "c", "<", "n", "fid", "v", 0)));
}

JsonOwner RunRecordQuery(const Run& run, const std::function<JsonOwner()>& describe) {
  constexpr int32_t kRecordStore = 0;
  const JsonMemoryWatch memory;
  const JsonOwner descriptor = describe();
  const auto store = run.policydb.OpenDocument(kRecordStore, run.paths.data.utf8.CStr());
  JsonOwner records(store ? store->Query(descriptor.Get()) : nullptr);
  return memory.WasRefused() ? JsonOwner() : UnlessEmpty(std::move(records));
}

}  // namespace ostrell
