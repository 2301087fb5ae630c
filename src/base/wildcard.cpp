#include "base/wildcard.h"

#include <cstddef>

#include "base/fold_case.h"

namespace ostrell {
namespace {

// Past the code points: a byte that belongs to no character, and what stands behind the last one.
constexpr char32_t kStrayByte = 0x110000;
constexpr char32_t kNoCharacter = 0x120000;

struct Character {
  char32_t code;
  size_t length;  // in bytes
};

// The first character of UTF-8 text.
Character FirstCharacter(std::string_view text) {
  if (text.empty()) {
    return {kNoCharacter, 0};
  }
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) {
    return {lead, 1};
  }
  const Character stray = {kStrayByte + lead, 1};
  const size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) {
    return stray;
  }
  char32_t code = lead & (0x7Fu >> length);
  for (const char next : text.substr(1, length - 1)) {
    if ((next & 0xC0) != 0x80) {
      return stray;
    }
    code = code << 6 | (next & 0x3Fu);
  }
  const bool isSurrogate = code >= 0xD800 && code < 0xE000;
  const bool isTooLong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  return isSurrogate || isTooLong || code > 0x10FFFF ? stray : Character{code, length};
}

bool IsRun(char32_t code) {
  return code == '*' || code == '>';
}

}  // namespace

bool MatchesWildcard(std::string_view text, std::string_view pattern) {
  // Where to go on after a mismatch: behind the last run, which then takes one more character. An
  // earlier run need not be tried again: what it could reach, the last one reaches as well.
  std::string_view textOfRun;
  std::string_view patternOfRun;
  bool hasRun = false;
  while (!text.empty()) {
    const Character next = FirstCharacter(text);
    const Character wanted = FirstCharacter(pattern);
    if (IsRun(wanted.code)) {
      pattern.remove_prefix(1);
      hasRun = true;
      textOfRun = text;
      patternOfRun = pattern;
    } else if (wanted.code == '?' || FoldCase(wanted.code) == FoldCase(next.code)) {
      text.remove_prefix(next.length);
      pattern.remove_prefix(wanted.length);
    } else if (hasRun) {
      textOfRun.remove_prefix(FirstCharacter(textOfRun).length);
      text = textOfRun;
      pattern = patternOfRun;
    } else {
      return false;
    }
  }
  while (!pattern.empty() && IsRun(static_cast<unsigned char>(pattern.front()))) {
    pattern.remove_prefix(1);
  }
  return pattern.empty();
}

}  // namespace ostrell
