#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "env/settings.h"
#include "tests/support/outside_call.h"

namespace ostrell {

// For tests: a settings store in memory that notes what is asked of it. Keys are UTF-8. A value is
// found under its own width only; where there is none, the store leaves a number behind all the
// same.
struct FakeSettingsStore : SettingsStore {
  std::map<std::string, int32_t> numbers;
  std::map<std::string, int64_t> times;
  int32_t yes = 1;  // the result when a value is found

  std::vector<std::string> readKeys;  // of 64-bit readings, in their order
  std::vector<std::pair<std::string, int64_t>> written;
  int releases = 0;

  // A holder of this store, which must outlive it.
  Settings Hold() { return Settings(SettingsStoreOwner(this)); }

  void Release() override { ++releases; }
  int32_t ReadInt32(const char* key, int32_t* value) override {
    const OutsideCall call(1);
    return Find(numbers, key, value, call);
  }
  int32_t ReadInt64(const char* key, int64_t* value) override {
    const OutsideCall call(3);
    readKeys.emplace_back(key);
    const int32_t result = Find(times, key, value, call);
    *value = call.Or(*value, {*value, INT64_MIN, INT64_MAX});
    return call.Or(result, {0, 1, 1});
  }
  void Reserved3() override {}
  void Reserved4() override {}
  int32_t WriteInt64(const char* key, int64_t value) override {
    const OutsideCall call(1);
    if (!call.Fails()) {
      written.emplace_back(key, value);
      times[key] = value;
    }
    return call.Or(1, {0});
  }

 private:
  template <class Values, class Number>
  int32_t Find(const Values& values, const char* key, Number* value,
               const OutsideCall& call) const {
    const auto found = values.find(key);
    *value = found != values.end() ? found->second : 7;
    return found != values.end() ? call.Or(yes, {0, yes, yes}) : 0;
  }
};

}  // namespace ostrell
