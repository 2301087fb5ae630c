#include "base/print.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace ostrell {
namespace {

// Formats are checked while they are compiled: that another one is refused shows here alone.
template <class... Args>
constexpr bool Fits(std::string_view format) {
  return PrintFormat<char, Args...>::Fits(format);
}

TEST(Print, FormatsThatFit) {
  static_assert(Fits<>("") && Fits<>("100%%") && Fits<int>("%%%d%%"));
  static_assert(Fits<const char*, char, std::string>("%s%c %-20s"));
  static_assert(Fits<int, uint64_t, uint8_t>("%lld %u %02x") && Fits<int>("%llx"));
  static_assert(PrintFormat<wchar_t, std::wstring, wchar_t>::Fits(L"%s%c"));
  EXPECT_EQ(Print("%%%d%%", 5), "%5%");
}

TEST(Print, FormatsThatDoNot) {
  static_assert(!Fits<int>("%s") && !Fits<const char*>("%d") && !Fits<int>("%c"));
  static_assert(!Fits<char>("%d") && !Fits<bool>("%d") && !Fits<double>("%d"));
  static_assert(!Fits<std::wstring>("%s") && !PrintFormat<wchar_t, char>::Fits(L"%c"));
  static_assert(!Fits<>("%d") && !Fits<int>("%d%d") && !Fits<int>("") && !Fits<int>("%%"));
  static_assert(!Fits<const char*>("%lls") && !Fits<char>("%llc"));
  static_assert(!Fits<int>("%ld") && !Fits<int>("%lllld") && !Fits<int>("%hd"));
  static_assert(!Fits<int>("%f") && !Fits<int>("%n") && !Fits<int>("%*d") && !Fits<int>("% d"));
  for (const char* const cut : {"%", "%2", "%-", "%l", "%ll", "x%"}) {
    EXPECT_FALSE(Fits<int>(cut) || Fits<>(cut)) << cut;
  }
}

}  // namespace
}  // namespace ostrell
