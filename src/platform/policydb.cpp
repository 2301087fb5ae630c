#include "platform/policydb.h"

#include "platform/closed_library.h"

namespace ostrell {
namespace {

constexpr uint16_t kOpenDocument = 9;
constexpr uint16_t kOpenQuarantine = 10;
constexpr uint16_t kOpenSettingsStore = 13;

const ClosedLibrary& Library() {
  static const ClosedLibrary library(L"policydb.dll");
  return library;
}

}  // namespace

SettingsStoreOwner OpenSettingsStore(const char* feature) {
  const auto open = Library().ByOrdinal<SettingsStore* (*)(const char*)>(kOpenSettingsStore);
  return SettingsStoreOwner(open != nullptr ? open(feature) : nullptr);
}

PolicyDocumentOwner OpenPolicyDocument(int32_t document, const char* dataPath) {
  const auto open = Library().ByOrdinal<PolicyDocument* (*)(int32_t, const char*)>(kOpenDocument);
  return PolicyDocumentOwner(open != nullptr ? open(document, dataPath) : nullptr);
}

QuarantineOwner OpenQuarantine() {
  const auto open = Library().ByOrdinal<Quarantine* (*)()>(kOpenQuarantine);
  return QuarantineOwner(open != nullptr ? open() : nullptr);
}

}  // namespace ostrell
