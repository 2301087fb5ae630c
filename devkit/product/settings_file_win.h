#pragma once

#include <cstdint>
#include <string>

#include "platform/policydb.h"

namespace ostrell {

// A settings section kept in a file of two objects of numbers, one for each width:
//
//   {"int32": {"isReport": 1}, "int64": {"rpttm_ui": 1793527200}}
//
// Either object may be missing, other members are kept as they stand. The file is read at every
// call, so a change made by hand counts at once. A file that is not of this form is damaged: it is
// never written to.
class SettingsFile final : public SettingsStore {
 public:
  // No file is an empty section, and the first write makes it. Null when the file is damaged or
  // cannot be read.
  static SettingsStore* Open(const std::wstring& path);

  // A key that is stored under the other width is not found.
  void Release() noexcept override { delete this; }
  int32_t ReadInt32(const char* key, int32_t* value) noexcept override;
  int32_t ReadInt64(const char* key, int64_t* value) noexcept override;
  void Reserved3() noexcept override {}
  void Reserved4() noexcept override {}
  // Non-zero when the file holds the value.
  int32_t WriteInt64(const char* key, int64_t value) noexcept override;

 private:
  explicit SettingsFile(const std::wstring& settingsPath) : path(settingsPath) {}

  std::wstring path;
};

}  // namespace ostrell
