#include "base/wildcard.h"

#include "base/text.h"

namespace ostrell {
namespace {

// Bytes of the character at the front of `text`, which is not empty.
size_t CharacterLength(std::string_view text) {
  size_t length = 1;
  while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) {
    ++length;
  }
  return length;
}

bool IsRun(char character) {
  return character == '*' || character == '>';
}

}  // namespace

bool MatchesWildcard(std::string_view text, std::string_view pattern) {
  // Where to go on after a mismatch: behind the last run, which then takes one more character. An
  // earlier run need not be tried again: what it could reach, the last one reaches as well.
  std::string_view textOfRun;
  std::string_view patternOfRun;
  bool hasRun = false;
  while (!text.empty()) {
    if (!pattern.empty() && IsRun(pattern.front())) {
      pattern.remove_prefix(1);
      hasRun = true;
      textOfRun = text;
      patternOfRun = pattern;
    } else if (!pattern.empty() && pattern.front() == '?') {
      text.remove_prefix(CharacterLength(text));
      pattern.remove_prefix(1);
    } else if (!pattern.empty() && LowerAscii(pattern.front()) == LowerAscii(text.front())) {
      text.remove_prefix(1);
      pattern.remove_prefix(1);
    } else if (hasRun) {
      textOfRun.remove_prefix(CharacterLength(textOfRun));
      text = textOfRun;
      pattern = patternOfRun;
    } else {
      return false;
    }
  }
  while (!pattern.empty() && IsRun(pattern.front())) {
    pattern.remove_prefix(1);
  }
  return pattern.empty();
}

}  // namespace ostrell
