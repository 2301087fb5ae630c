#pragma once

#include <algorithm>
#include <string_view>

#include "base/text.h"

namespace ostrell {

// True for the name of a crash dump, one that ends in ".dmp", ASCII letters in any case. A listing
// of "*.dmp" holds other names, too, whose short form ends so: "memory.dmpbackup".
constexpr bool IsDumpName(std::wstring_view name) {
  constexpr std::wstring_view kEnding = L".dmp";
  return name.size() >= kEnding.size() &&
         std::ranges::equal(name.substr(name.size() - kEnding.size()), kEnding, {},
                            &LowerAscii<wchar_t>);
}

}  // namespace ostrell
