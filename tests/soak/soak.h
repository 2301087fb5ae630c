#pragma once

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>

namespace ostrell {

// How much of a soak is tried: all of it under script/soak, which sets OSTRELL_SOAK to 1, or of its
// many points only every n-th where it says n. Without it, the short sample that every test run
// repeats.
inline bool IsWholeSoak() {
  return std::getenv("OSTRELL_SOAK") != nullptr;
}

// A line of protsvc.log that is reported.
inline std::string FailureAt(std::time_t time) {
  char text[64];
  return {text, std::strftime(text, sizeof text, "[%Y-%m-%d %H:%M:%S] 0 failed\n",
                              std::localtime(&time))};
}

// Of many points: every which one is tried.
inline int64_t SoakStep(int64_t sample) {
  const char* const step = std::getenv("OSTRELL_SOAK");
  return step != nullptr ? std::strtoll(step, nullptr, 10) : sample;
}

}  // namespace ostrell
