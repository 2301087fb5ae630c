#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/json_array_text.h"
#include "env/run.h"
#include "reports/fingerprint.h"

namespace ostrell {

// rc5, the pop-up block log report: what the product's pop-up blocker and its kin have blocked
// since the last report. Gating and recording are those of rc2 (detection_log.h), under a key of
// its own.
void PopupBlockJob(const Run& run);

// Sends the entries of [from, to], in seconds since 1970. Returns 1 when they were uploaded, else
// 0.
int32_t SendPopupBlockReport(const Run& run, int64_t from, int64_t to);

// The body with the entries of [from, to], newest first, as PopupEntries takes them, from the
// product's pop-up block database. That is opened, repaired and made as record_store.h says.
// Nothing when it does not open or holds none, and when the text cannot be made.
std::optional<std::string> CollectPopupBlockEntries(const Run& run, int64_t from, int64_t to);

// The "detail" objects of rows that name a "product_name", each as it stands, without those whose
// fingerprint an earlier one has.
class PopupEntries {
 public:
  // Null is none.
  void Add(const json_t* entry);
  // As JsonArrayText::Take.
  std::optional<std::string> Take() { return text.Take(); }

 private:
  JsonArrayText text;
  MetFingerprints met;
};

// Entries of the pop-up blocker itself ("product_name" is "popblock") are told apart by group and
// item ("gname", "iname"), all others by "product_name" alone. 0 when that is no text.
uint32_t PopupFingerprint(const json_t* entry);

}  // namespace ostrell
