#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace ostrell {

// The number that all of `digits` is, decimal; nothing for any other text and for a number that
// does not fit.
template <class Number>
std::optional<Number> WholeNumber(std::string_view digits) {
  Number number = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, number);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

}  // namespace ostrell
