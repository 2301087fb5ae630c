#include <windows.h>

#include <algorithm>

#include "base/registry_win.h"
#include "env/customer_id.h"
#include "env/product_paths.h"
#include "platform/policydb.h"

namespace ostrell {
namespace {

constexpr int32_t kCustomerDocument = 25;
constexpr wchar_t kKey[] = L"SOFTWARE\\Velmora\\Corvane";
constexpr wchar_t kValue[] = L"cid";

void DeleteUserValue() {
  RegistryKey key;
  if (OpenRegistryKey(HKEY_CURRENT_USER, kKey, KEY_ALL_ACCESS, key) == ERROR_SUCCESS) {
    RegDeleteValueW(key.Get(), kValue);
  }
}

}  // namespace

uint32_t ReadCustomerId() {
  const auto document = OpenPolicyDocument(kCustomerDocument, GetProductPaths().data.utf8.CStr());
  const JsonOwner json(document ? document->Json() : nullptr);
  return CustomerIdFrom(json.Get());
}

uint32_t CustomerIdFrom(json_t* document) {
  int id = -1;
  if (document != nullptr && json_unpack(document, "{s:i}", "id", &id) == 0 && id >= 0) {
    DeleteUserValue();
    return static_cast<uint32_t>(id);
  }
  const auto stored =
      static_cast<int32_t>(ReadRegistryDword(HKEY_CURRENT_USER, kKey, kValue).value_or(0));
  return static_cast<uint32_t>(std::max(stored, 0));
}

}  // namespace ostrell
