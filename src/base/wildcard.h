#pragma once

#include <string_view>

namespace ostrell {

// True when the whole of `text` matches `pattern`: "*" and ">" stand for any run of characters,
// also none, "?" for any one character; every other character stands for itself, without regard to
// case (fold_case.h). Both are UTF-8, and a character is a code point; a byte of damaged text that
// belongs to none is a character of its own, equal to the same byte alone. Takes at most the
// product of both lengths in steps, whatever the pattern.
bool MatchesWildcard(std::string_view text, std::string_view pattern);

}  // namespace ostrell
