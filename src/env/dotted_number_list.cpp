#include "env/dotted_number_list.h"

#include <algorithm>

namespace ostrell {
namespace {

constexpr std::string_view kSeparators = ";,\n";
constexpr unsigned kLargestNumber = 255;
constexpr unsigned kLongestPrefix = 32;

bool Take(std::string_view& text, char wanted) {
  if (!text.starts_with(wanted)) {
    return false;
  }
  text.remove_prefix(1);
  return true;
}

// Takes all leading digits; false when there are none or the number exceeds `limit`.
bool TakeNumber(std::string_view& text, unsigned limit) {
  const std::string_view digits =
      text.substr(0, std::min(text.find_first_not_of("0123456789"), text.size()));
  text.remove_prefix(digits.size());
  unsigned number = 0;
  for (const char digit : digits) {
    number = number * 10 + static_cast<unsigned>(digit - '0');
    if (number > limit) {
      return false;
    }
  }
  return !digits.empty();
}

bool TakeQuad(std::string_view& text) {
  for (int i = 0; i < 4; ++i) {
    if ((i > 0 && !Take(text, '.')) || !TakeNumber(text, kLargestNumber)) {
      return false;
    }
  }
  return true;
}

bool IsItem(std::string_view item) {
  if (!TakeQuad(item)) {
    return false;
  }
  if (Take(item, '/')) {
    return TakeNumber(item, kLongestPrefix) && item.empty();
  }
  if (Take(item, '-')) {
    return TakeQuad(item) && item.empty();
  }
  return item.empty();
}

}  // namespace

bool IsDottedNumberList(std::string_view text) {
  while (!text.empty() && text != "*") {
    const std::string_view item = text.substr(0, text.find_first_of(kSeparators));
    if (!IsItem(item)) {
      return false;
    }
    text.remove_prefix(std::min(item.size() + 1, text.size()));
  }
  return true;
}

}  // namespace ostrell
