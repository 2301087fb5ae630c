#pragma once

#include <string>
#include <string_view>

namespace ostrell {

// Wide text in the ANSI code page of the calling thread (CP_THREAD_ACP). Characters that the code
// page lacks become its default character; empty when the conversion fails.
std::string ThreadAnsiFromWide(std::wstring_view text);

}  // namespace ostrell
