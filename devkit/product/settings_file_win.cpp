#include "devkit/product/settings_file_win.h"

#include <limits>

#include "devkit/product/guarded.h"
#include "devkit/product/json_file_win.h"

namespace ostrell {
namespace {

constexpr char kInt32[] = "int32";
constexpr char kInt64[] = "int64";

// True for a missing section too.
template <class Number>
bool IsSectionOf(json_t* section) {
  if (section == nullptr) {
    return true;
  }
  const char* key = nullptr;
  json_t* value = nullptr;
  json_object_foreach(section, key, value) {
    if (!json_is_integer(value) || json_integer_value(value) < std::numeric_limits<Number>::min() ||
        json_integer_value(value) > std::numeric_limits<Number>::max()) {
      return false;
    }
  }
  return json_is_object(section);
}

// An empty object when there is no file; empty when it is damaged or cannot be read.
JsonOwner LoadSettings(const std::wstring& path) {
  JsonFile file = LoadJsonFile(path);
  if (file.error == ERROR_FILE_NOT_FOUND || file.error == ERROR_PATH_NOT_FOUND) {
    return JsonOwner(json_object());
  }
  const bool sound = json_is_object(file.value.Get()) &&
                     IsSectionOf<int32_t>(json_object_get(file.value.Get(), kInt32)) &&
                     IsSectionOf<int64_t>(json_object_get(file.value.Get(), kInt64));
  return sound ? std::move(file.value) : JsonOwner();
}

template <class Number>
int32_t ReadNumber(const std::wstring& path, const char* section, const char* key, Number* value) {
  return Guarded(0, [&] {
    const JsonOwner settings = LoadSettings(path);
    const json_t* found = json_object_get(json_object_get(settings.Get(), section), key);
    if (found == nullptr || value == nullptr) {
      return 0;
    }
    *value = static_cast<Number>(json_integer_value(found));
    return 1;
  });
}

}  // namespace

SettingsStore* SettingsFile::Open(const std::wstring& path) {
  return LoadSettings(path) ? new SettingsFile(path) : nullptr;
}

int32_t SettingsFile::ReadInt32(const char* key, int32_t* value) noexcept {
  return ReadNumber(path, kInt32, key, value);
}

int32_t SettingsFile::ReadInt64(const char* key, int64_t* value) noexcept {
  return ReadNumber(path, kInt64, key, value);
}

int32_t SettingsFile::WriteInt64(const char* key, int64_t value) noexcept {
  return Guarded(0, [&] {
    const JsonOwner settings = LoadSettings(path);
    json_t* section = json_object_get(settings.Get(), kInt64);
    if (section == nullptr) {
      section = json_object();
      if (json_object_set_new(settings.Get(), kInt64, section) != 0) {
        return 0;
      }
    }
    const bool written = json_object_set_new(section, key, json_integer(value)) == 0 &&
                         SaveJsonFile(path, settings.Get());
    return written ? 1 : 0;
  });
}

}  // namespace ostrell
