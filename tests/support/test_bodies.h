#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace ostrell {

// Bodies for tests, the same on every run and machine.

// Bytes that do not compress: the high bytes of Knuth's 64-bit linear congruential generator,
// started at 1.
inline std::string RandomBody(size_t length) {
  std::string body(length, '\0');
  uint64_t state = 1;
  for (char& byte : body) {
    state = state * 6364136223846793005u + 1442695040888963407u;
    byte = static_cast<char>(state >> 56);
  }
  return body;
}

// Lines that do: "7 squared is 49".
inline std::string SquaresBody(uint64_t lines) {
  std::string body;
  for (uint64_t i = 0; i < lines; ++i) {
    body += std::to_string(i) + " squared is " + std::to_string(i * i) + "\n";
  }
  return body;
}

}  // namespace ostrell
