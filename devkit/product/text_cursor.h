#pragma once

#include <string_view>

namespace ostrell {

// Reads a text from its front; what was taken is gone.
class TextCursor {
 public:
  explicit TextCursor(std::string_view text) : rest(text) {}

  bool AtEnd() const { return rest.empty(); }
  std::string_view Rest() const { return rest; }

  // Takes `expected` when it comes next; true when it did.
  bool Take(std::string_view expected) {
    const bool found = rest.starts_with(expected);
    rest.remove_prefix(found ? expected.size() : 0);
    return found;
  }

  // Takes the text before the next of `stop`, or all that is left.
  std::string_view TakeUntil(std::string_view stop) { return TakeFront(rest.find(stop)); }

  // Takes what comes next and consists of `characters`; it may be empty.
  std::string_view TakeAll(std::string_view characters) {
    return TakeFront(rest.find_first_not_of(characters));
  }

  // The blanks of XML; true when there was one.
  bool TakeBlanks() { return !TakeAll(" \t\r\n").empty(); }

 private:
  std::string_view TakeFront(size_t end) {
    const std::string_view taken = rest.substr(0, end);
    rest.remove_prefix(taken.size());
    return taken;
  }

  std::string_view rest;
};

}  // namespace ostrell
