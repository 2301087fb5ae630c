#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/policydb.h"

namespace ostrell {

// Holder of the product's settings store for this program, passed to every job. It may hold no
// store, which is a valid state: then nothing is found and nothing is written.
//
// Keys are wide text and are handed to the store as UTF-8. A value stored under another width reads
// as not found.
class Settings {
 public:
  Settings() = default;
  explicit Settings(SettingsStoreOwner opened) : store(std::move(opened)) {}

  bool HasStore() const { return static_cast<bool>(store); }

  std::optional<int32_t> ReadInt32(std::wstring_view key) const;
  std::optional<int64_t> ReadInt64(std::wstring_view key) const;
  // The store's own result is not looked at.
  void WriteInt64(std::wstring_view key, int64_t value) const;

 private:
  SettingsStoreOwner store;
};

}  // namespace ostrell
