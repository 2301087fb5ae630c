#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "base/calendar.h"
#include "base/registry.h"
#include "env/report_clock.h"
#include "machine/system_facts.h"
#include "tests/support/outside_call.h"

namespace ostrell {

// A registry of typed values.
struct FakeRegistry : Registry {
  using Key = std::pair<RegistryRoot, std::wstring>;  // root, key + "\\" + name

  mutable std::map<Key, uint32_t> numbers;
  std::map<Key, std::wstring> texts;

  static Key Of(RegistryRoot root, const std::wstring& key, const std::wstring& name) {
    return {root, key + L"\\" + name};
  }

  std::optional<std::wstring> ReadText(RegistryRoot root, const wchar_t* key, const wchar_t* name,
                                       uint32_t byteLimit) const override {
    const OutsideCall call(1);
    const auto found = texts.find(Of(root, key, name));
    // The limit counts UTF-16 units with the terminator.
    return found != texts.end() && (found->second.size() + 1) * 2 <= byteLimit && !call.Fails()
               ? std::optional(found->second)
               : std::nullopt;
  }
  std::optional<uint32_t> ReadDword(RegistryRoot root, const wchar_t* key,
                                    const wchar_t* name) const override {
    const OutsideCall call(1);
    const auto found = numbers.find(Of(root, key, name));
    return found != numbers.end() && !call.Fails() ? std::optional(found->second) : std::nullopt;
  }
  void DeleteValue(RegistryRoot root, const wchar_t* key, const wchar_t* name) const override {
    if (!OutsideCall(1).Fails()) {
      numbers.erase(Of(root, key, name));
    }
  }
};

struct FakeFacts : SystemFacts {
  std::optional<OperatingSystem> system = OperatingSystem{19, true, 26100};
  uint16_t machine = 0x8664;
  std::optional<ostrell::KernelVersion> kernel = ostrell::KernelVersion{10, 0, 26100, 4652};
  bool isModern = true;

  std::optional<OperatingSystem> QueryOperatingSystem() const override {
    return OutsideCall(1).Fails() ? std::nullopt : system;
  }
  uint16_t NativeMachine() const override { return OutsideCall(1).Or<uint16_t>(machine, {0}); }
  std::optional<ostrell::KernelVersion> ReadKernelVersion() const override {
    return OutsideCall(1).Fails() ? std::nullopt : kernel;
  }
  bool HasModernEventLog() const override { return OutsideCall(1).Or(isModern, {false}); }
};

// A clock that stands. The zone of the machine that runs
// the tests has no say: what is local is so by the offset that mktime takes away again.
struct FakeClock : Clock {
  int64_t now;
  bool knowsZone = true;  // else no time can be made local

  explicit FakeClock(int64_t seconds) : now(seconds) {}
  int64_t Now() const override {
    return OutsideCall(3).Or<int64_t>(now, {-1, now - 100000000, now + 100000000});
  }
  uint64_t LocalTicks(uint64_t utcTicks) const override {
    if (OutsideCall(1).Fails() || !knowsZone) {
      return 0;
    }
    const std::time_t seconds = SecondsFromTicks(utcTicks);
    std::tm fields = seconds >= 0 ? *std::gmtime(&seconds) : std::tm{};
    fields.tm_isdst = -1;
    const int64_t offset = seconds >= 0 ? seconds - std::mktime(&fields) : 0;
    return utcTicks + static_cast<uint64_t>(offset) * kTicksPerSecond;
  }
};

}  // namespace ostrell
