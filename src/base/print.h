#pragma once

#include <array>
#include <concepts>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace ostrell {

// A printf-style format that fits arguments of these types; another one does not compile. "%s"
// takes text of the format's own character type, "%c" a character, "%d", "%u", "%x", "%lld",
// "%llu" and "%llx" any integer, printed in full. A width may stand before an integer's letter, a
// "-" and a width before "s".
template <class Char, class... Args>
class PrintFormat {
 public:
  template <size_t Size>
  consteval PrintFormat(const Char (&text)[Size])  // NOLINT(google-explicit-constructor)
      : format(text, Size - 1) {
    if (!Fits(format)) {
      DoesNotFitItsArguments();
    }
  }

  constexpr std::basic_string_view<Char> View() const { return format; }

  static constexpr bool Fits(std::basic_string_view<Char> format) {
    constexpr Kind kGiven[] = {KindOf<Args>()..., Kind::kOther};
    size_t argument = 0;
    for (size_t at = 0; at < format.size(); ++at) {
      if (format[at] != '%' || (at + 1 < format.size() && format[++at] == '%')) {
        continue;
      }
      while (at < format.size() &&
             (format[at] == '-' || (format[at] >= '0' && format[at] <= '9'))) {
        ++at;
      }
      const bool isLong = at + 2 < format.size() && format[at] == 'l' && format[at + 1] == 'l';
      at += isLong ? 2 : 0;
      if (at >= format.size() || argument == sizeof...(Args) || kGiven[argument] == Kind::kOther ||
          KindOfLetter(format[at], isLong) != kGiven[argument]) {
        return false;
      }
      ++argument;
    }
    return argument == sizeof...(Args);
  }

 private:
  enum class Kind { kText, kCharacter, kInteger, kOther };

  template <class Arg>
  static constexpr Kind KindOf() {
    if (std::is_convertible_v<const Arg&, std::basic_string_view<Char>>) {
      return Kind::kText;
    }
    if (std::is_same_v<Arg, Char>) {
      return Kind::kCharacter;
    }
    return std::integral<Arg> && !std::is_same_v<Arg, bool> ? Kind::kInteger : Kind::kOther;
  }

  static constexpr Kind KindOfLetter(Char letter, bool isLong) {
    if (letter == 'd' || letter == 'u' || letter == 'x') {
      return Kind::kInteger;
    }
    if (isLong) {
      return Kind::kOther;
    }
    return letter == 's' ? Kind::kText : letter == 'c' ? Kind::kCharacter : Kind::kOther;
  }

  // Not a constant expression: a format that comes here is an error where it is written.
  static void DoesNotFitItsArguments() {}

  std::basic_string_view<Char> format;
};

// An argument of its kind; an integer keeps its sign and whether it is wider than an int.
template <class Char>
using PrintArgument =
    std::variant<std::basic_string_view<Char>, Char, int, unsigned, long long, unsigned long long>;

template <class Char, class Arg>
PrintArgument<Char> PrintArgumentOf(const Arg& argument) {
  if constexpr (std::is_convertible_v<const Arg&, std::basic_string_view<Char>>) {
    return std::basic_string_view<Char>(argument);
  } else if constexpr (std::is_same_v<Arg, Char>) {
    return argument;
  } else if constexpr (sizeof(Arg) <= sizeof(int)) {
    return static_cast<std::conditional_t<std::is_signed_v<Arg>, int, unsigned>>(argument);
  } else {
    return static_cast<std::conditional_t<std::is_signed_v<Arg>, long long, unsigned long long>>(
        argument);
  }
}

// printf-style text by {fmt}: one meaning of every conversion on every platform. The library is
// compiled once, not where it is used: that keeps the program small and its build short.
std::string PrintArguments(std::string_view format, std::span<const PrintArgument<char>> arguments);
std::wstring PrintArguments(std::wstring_view format,
                            std::span<const PrintArgument<wchar_t>> arguments);

template <class... Args>
std::string Print(PrintFormat<char, std::type_identity_t<Args>...> format, const Args&... args) {
  const std::array<PrintArgument<char>, sizeof...(Args)> list = {PrintArgumentOf<char>(args)...};
  return PrintArguments(format.View(), list);
}
template <class... Args>
std::wstring Print(PrintFormat<wchar_t, std::type_identity_t<Args>...> format,
                   const Args&... args) {
  const std::array<PrintArgument<wchar_t>, sizeof...(Args)> list = {
      PrintArgumentOf<wchar_t>(args)...};
  return PrintArguments(format.View(), list);
}

}  // namespace ostrell
