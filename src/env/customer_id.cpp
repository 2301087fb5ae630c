#include "env/customer_id.h"

#include <algorithm>

#include "base/json.h"
#include "env/run.h"

namespace ostrell {
namespace {

constexpr int32_t kCustomerDocument = 25;
constexpr wchar_t kKey[] = L"SOFTWARE\\Velmora\\Corvane";
constexpr wchar_t kValue[] = L"cid";

// `document` is null where there is none.
uint32_t CustomerIdFrom(json_t* document, const Registry& registry) {
  int id = -1;
  if (document != nullptr && json_unpack(document, "{s:i}", "id", &id) == 0 && id >= 0) {
    registry.DeleteValue(RegistryRoot::kUser, kKey, kValue);
    return static_cast<uint32_t>(id);
  }
  const auto stored =
      static_cast<int32_t>(registry.ReadDword(RegistryRoot::kUser, kKey, kValue).value_or(0));
  return static_cast<uint32_t>(std::max(stored, 0));
}

}  // namespace

uint32_t ReadCustomerId(const Run& run) {
  const auto document = run.policydb.OpenDocument(kCustomerDocument, run.paths.data.utf8.CStr());
  const JsonOwner json(document ? document->Json() : nullptr);
  return CustomerIdFrom(json.Get(), run.registry);
}

}  // namespace ostrell
