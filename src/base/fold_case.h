#pragma once

namespace ostrell {

// Two characters differ in case alone when their folded forms are equal. This is Unicode's simple
// folding, one code point to one: statuses C and S of CaseFolding.txt, version 15.0. No language
// has rules of its own: the dotted capital I and the dotless small one stay what they are. What has
// no case, and any number that is no code point, is its own folded form.
char32_t FoldCase(char32_t codePoint);

}  // namespace ostrell
