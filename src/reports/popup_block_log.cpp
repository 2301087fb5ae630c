#include "reports/popup_block_log.h"

#include <utility>

#include "reports/fingerprint.h"

namespace ostrell {

JsonOwner KeepPopupEntries(const JsonOwner& rows) {
  JsonOwner kept(json_array());
  FingerprintSet met(kMostFingerprints);
  size_t index = 0;
  json_t* row = nullptr;
  json_array_foreach(rows.Get(), index, row) {
    json_t* const entry = json_object_get(row, "detail");
    if (json_object_get(entry, "product_name") != nullptr && met.Add(PopupFingerprint(entry))) {
      json_array_append(kept.Get(), entry);
    }
  }
  return UnlessEmpty(std::move(kept));
}

uint32_t PopupFingerprint(const json_t* entry) {
  const auto product = TextMember(entry, "product_name");
  if (!product) {
    return 0;
  }
  uint32_t fingerprint = ChainFingerprint(0, *product);
  if (product == "popblock") {
    for (const char* name : {"gname", "iname"}) {
      fingerprint = ChainFingerprint(fingerprint, TextMember(entry, name).value_or(""));
    }
  }
  return fingerprint;
}

}  // namespace ostrell
