#pragma once

#include <utility>

namespace ostrell {

// Runs one entry of a library: what would leave it as an exception (no memory) becomes `failure`.
template <class Result, class Body>
Result Guarded(Result failure, Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    return failure;
  }
}

}  // namespace ostrell
