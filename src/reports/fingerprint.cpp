#include "reports/fingerprint.h"

#include <utility>

#include "base/limited_set.h"

namespace ostrell {

JsonOwner KeepFirstOfEach(const JsonOwner& records,
                          std::optional<uint32_t> (*fingerprintOf)(json_t* record),
                          json_t* (*entryOf)(json_t* record)) {
  JsonOwner kept(json_array());
  LimitedSet<uint32_t> met(kMaxFingerprints);
  size_t index = 0;
  json_t* record = nullptr;
  json_array_foreach(records.Get(), index, record) {
    const auto fingerprint = fingerprintOf(record);
    if (fingerprint && met.Add(*fingerprint)) {
      json_array_append(kept.Get(), entryOf(record));
    }
  }
  return UnlessEmpty(std::move(kept));
}

}  // namespace ostrell
