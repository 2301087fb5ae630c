#include "env/settings.h"

#include <string>

#include "base/text.h"
#include "platform/assumptions.h"

namespace ostrell {

std::optional<int32_t> Settings::ReadInt32(std::wstring_view key) const {
  int32_t value = 0;
  if (!store || !assumed::IsYes(store->ReadInt32(Utf8FromWide(key).c_str(), &value))) {
    return std::nullopt;
  }
  return value;
}

std::optional<int64_t> Settings::ReadInt64(std::wstring_view key) const {
  int64_t value = 0;
  if (!store || !assumed::IsYes(store->ReadInt64(Utf8FromWide(key).c_str(), &value))) {
    return std::nullopt;
  }
  return value;
}

void Settings::WriteInt64(std::wstring_view key, int64_t value) const {
  if (store) {
    store->WriteInt64(Utf8FromWide(key).c_str(), value);
  }
}

}  // namespace ostrell
