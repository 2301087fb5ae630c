#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "base/print.h"

namespace ostrell {

// Text of a fixed capacity with the semantics of a bounded print: what does not fit is cut to
// Size - 1 characters, and the text is always terminated. Cutting is by character of the buffer, so
// a UTF-8 sequence can be cut in its middle.
template <class Char, size_t Size>
class BoundedText {
  static_assert(Size > 0);

 public:
  BoundedText() = default;
  explicit BoundedText(std::basic_string_view<Char> text) { Append(text); }

  // printf-style formatting (base/print.h).
  template <class... Args>
  static BoundedText Print(PrintFormat<Char, std::type_identity_t<Args>...> format,
                           const Args&... args) {
    return BoundedText(std::basic_string_view<Char>(ostrell::Print<Args...>(format, args...)));
  }

  void Append(std::basic_string_view<Char> text) {
    const size_t taken = std::min(text.size(), Size - 1 - length);
    std::copy_n(text.data(), taken, characters.data() + length);
    length += taken;
  }

  // A view of the text, and the text with its terminator. Both live as long as this object.
  std::basic_string_view<Char> View() const { return {characters.data(), length}; }
  const Char* CStr() const { return characters.data(); }
  bool IsEmpty() const { return length == 0; }

 private:
  std::array<Char, Size> characters{};
  size_t length = 0;
};

}  // namespace ostrell
