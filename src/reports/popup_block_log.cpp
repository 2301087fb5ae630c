#include "reports/popup_block_log.h"

#include "reports/fingerprint.h"

namespace ostrell {
namespace {

json_t* EntryOf(json_t* row) {
  return json_object_get(row, "detail");
}

std::optional<uint32_t> FingerprintOfEntry(json_t* row) {
  const json_t* const entry = EntryOf(row);
  return json_object_get(entry, "product_name") != nullptr ? std::optional(PopupFingerprint(entry))
                                                           : std::nullopt;
}

}  // namespace

JsonOwner KeepPopupEntries(const JsonOwner& rows) {
  return KeepFirstOfEach(rows, FingerprintOfEntry, EntryOf);
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
