#include "env/product_paths.h"
#include "platform/policydb.h"
#include "reports/record_query.h"

namespace ostrell {

JsonOwner RunRecordQuery(json_t* descriptor) {
  constexpr int32_t kRecordStore = 0;
  const auto store = OpenPolicyDocument(kRecordStore, GetProductPaths().data.utf8.CStr());
  return UnlessEmpty(JsonOwner(store ? store->Query(descriptor) : nullptr));
}

}  // namespace ostrell
