#pragma once

#include <string_view>

namespace ostrell {

// True for a list of items, each ended by ';', ',' or a line feed, the last one by the end of the
// text. An item is a quad a.b.c.d of decimal numbers of at most 255, which may be followed by
// "/n" (a prefix length of at most 32) or by "-" and a second quad (a range). Numbers may have
// leading zeros and any number of digits.
//
// The last item may be "*". An empty text is a list, an empty item before the end is not.
bool IsDottedNumberList(std::string_view text);

}  // namespace ostrell
