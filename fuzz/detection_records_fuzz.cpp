// Any JSON text as the records that the product's library might hand over: whatever comes in, what
// is kept is flat and no more than that.
#include "base/json.h"
#include "fuzz/fuzz_target.h"
#include "reports/detection_records.h"
#include "reports/popup_block_log.h"
#include "reports/quarantine.h"
#include "reports/sample_pass.h"

namespace ostrell {
namespace {

void CheckKept(const json_t* record) {
  Require(json_is_object(record) && json_object_get(record, "detail") == nullptr);
  const auto treatment = Integer64Member(record, "treatment");
  Require(!treatment || (*treatment >= 0 && *treatment <= 0xFFFF));
  Require(!json_is_integer(json_object_get(record, "ts")));
}

void ReadAsOtherLists(const json_t* records) {
  for (json_t* const record : Elements(records)) {
    for (PathOfRecord* const pathOf :
         {SubmittedSamplePath, NetworkProgramPath, FalsePositivePath}) {
      if (const auto path = pathOf(record)) {
        PathKey(*path);
      }
    }
    if (const auto entry = ReadQuarantineEntry(record)) {
      IsWanted(*entry, {1, records});
    }
  }
}

// A body is an array with an element.
JsonOwner Parsed(const std::optional<std::string>& body) {
  JsonOwner array(body ? json_loadb(body->data(), body->size(), 0, nullptr) : nullptr);
  Require(!body || json_array_size(array.Get()) > 0);
  return array;
}

}  // namespace

void CheckInput(std::string_view input) {
  const JsonOwner records(json_loadb(input.data(), input.size(), 0, nullptr));
  ReadAsOtherLists(records.Get());
  const size_t count = json_array_size(records.Get());
  PopupEntries entries;
  for (const json_t* const record : Elements(records.Get())) {
    entries.Add(record);
  }
  Require(json_array_size(Parsed(entries.Take()).Get()) <= count);
  const JsonOwner kept = Parsed(KeepDetectionRecords(records));
  Require(json_array_size(kept.Get()) <= count);
  for (const json_t* const record : Elements(kept.Get())) {
    CheckKept(record);
  }
}

}  // namespace ostrell
