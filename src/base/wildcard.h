#pragma once

#include <string_view>

namespace ostrell {

// True when the whole of `text` matches `pattern`: "*" and ">" stand for any run of characters,
// also none, "?" for any one character; every other character stands for itself, ASCII letters
// without regard to case. Both are UTF-8, and a character is a code point. Takes at most the
// product of both lengths in steps, whatever the pattern.
bool MatchesWildcard(std::string_view text, std::string_view pattern);

}  // namespace ostrell
