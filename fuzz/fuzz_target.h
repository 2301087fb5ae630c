#pragma once

#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace ostrell {

// What each target defines: drives its reader with foreign bytes and ends the program when a
// property does not hold. Behind the input's bytes there is nothing that may be read.
void CheckInput(std::string_view input);

inline void Require(bool property) {
  if (!property) {
    std::abort();
  }
}

// The first bytes of the input, which then begins behind them; fewer at its end.
inline std::string_view Take(std::string_view& input, size_t length) {
  const std::string_view taken = input.substr(0, length);
  input.remove_prefix(taken.size());
  return taken;
}

// Likewise, and 0 when there is none.
inline uint8_t TakeByte(std::string_view& input) {
  const std::string_view taken = Take(input, 1);
  return taken.empty() ? 0 : static_cast<uint8_t>(taken[0]);
}

}  // namespace ostrell
