#include "base/wildcard.h"

#include <cstddef>

#include "base/fold_case.h"
#include "base/text.h"

namespace ostrell {
namespace {

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
    const Utf8Character next = FirstCharacter(text);
    const Utf8Character wanted = FirstCharacter(pattern);
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
