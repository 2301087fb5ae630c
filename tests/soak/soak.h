#pragma once

#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace ostrell {

// Whether all of a soak is to be tried, as script/soak does (OSTRELL_SOAK=whole), or the short
// sample of it that every test run repeats.
inline bool IsWholeSoak() {
  const char* const how = std::getenv("OSTRELL_SOAK");
  return how != nullptr && std::string_view(how) == "whole";
}

// Of many points: every which one is tried.
inline int64_t SoakStep(int64_t sample) {
  return IsWholeSoak() ? 1 : sample;
}

}  // namespace ostrell
