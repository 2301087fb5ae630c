#pragma once

#include <string>

#include "base/json.h"
#include "store/record_store.h"

namespace ostrell {

// What a query finds, as a JSON array of one object a row; empty without a row.
inline std::string FetchedRows(const Connection& store, const json_t* query = nullptr) {
  const JsonOwner rows(json_array());
  FetchBlockItems(store, query, [&rows](const BlockItem& item) {
    json_t* const detail = json_incref(item.detail.Get());
    json_array_append_new(rows.Get(), json_pack("{s:I, s:I, s:o*}", "id", json_int_t{item.id}, "ts",
                                                json_int_t{item.ts}, "detail", detail));
  });
  return json_array_size(rows.Get()) > 0 ? CompactText(rows) : "";
}

}  // namespace ostrell
