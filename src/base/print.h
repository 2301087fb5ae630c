#pragma once

#include <fmt/printf.h>
#include <fmt/xchar.h>

#include <string>
#include <string_view>

namespace ostrell {

// printf-style text by {fmt}: one meaning of every conversion on every platform. "%s" takes text of
// the format's own character type, "%d", "%u", "%lld" and "%llu" any integer, printed in full.
//
// The formatting itself is compiled once, not where it is used: that keeps the program small.
std::string PrintArguments(std::string_view format, fmt::printf_args arguments);
std::wstring PrintArguments(std::wstring_view format, fmt::wprintf_args arguments);

template <class... Args>
std::string Print(std::string_view format, const Args&... args) {
  return PrintArguments(format, fmt::make_printf_args(args...));
}
template <class... Args>
std::wstring Print(std::wstring_view format, const Args&... args) {
  return PrintArguments(format, fmt::make_wprintf_args(args...));
}

}  // namespace ostrell
