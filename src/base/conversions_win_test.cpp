#include <windows.h>

#include <gtest/gtest.h>

#include <bit>
#include <cstring>

#include "base/calendar.h"
#include "base/text.h"

namespace ostrell {
namespace {

// The system's own conversions, at steps that meet every kind of year and time of day.
TEST(Calendar, AgreesWithTheSystem) {
  for (uint64_t ticks = 0; ticks < 0x7FFE000000000000; ticks += 0x0000ABCDEF123457 * 7) {
    const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SYSTEMTIME expected{};
    ASSERT_TRUE(FileTimeToSystemTime(&time, &expected));
    const SystemTime utc = SystemTimeFromTicks(ticks).value();
    EXPECT_EQ(std::memcmp(&utc, &expected, sizeof expected), 0) << ticks;
    FILETIME back{};
    const bool converts = SystemTimeToFileTime(&expected, &back) != 0;
    const auto own = TicksFromSystemTime(std::bit_cast<SystemTime>(expected));
    ASSERT_EQ(own.has_value(), converts) << ticks;
    if (converts) {
      EXPECT_EQ(*own, uint64_t{back.dwHighDateTime} << 32 | back.dwLowDateTime);
    }
  }
}

std::string SystemUtf8(std::wstring_view text) {
  std::string utf8(text.size() * 3, '\0');
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), utf8.data(),
                          static_cast<int>(utf8.size()), nullptr, nullptr);
  utf8.resize(static_cast<size_t>(size));
  return utf8;
}

// The portable conversion against the system's, for each unit alone and in the three places of a
// surrogate pair.
TEST(Utf8FromWide, AgreesWithTheSystemForEveryUnit) {
  for (int value = 1; value < 0x10000; ++value) {
    const auto unit = static_cast<wchar_t>(value);
    const std::wstring text{unit,   L'|', 0xD83D, unit,   L'|', unit,
                            0xDE00, L'|', 0xD83D, 0xDE00, unit};
    ASSERT_EQ(Utf8FromWide(text), SystemUtf8(text)) << std::hex << value;
  }
}

// Every sequence of two bytes alone, and between three more, as the system takes or refuses it.
TEST(WideFromUtf8, AgreesWithTheSystem) {
  for (int value = 0x0101; value < 0x10000; ++value) {
    const char first = static_cast<char>(value >> 8);
    const char second = static_cast<char>(value);
    for (const std::string& text :
         {std::string{first, second}, std::string{first, second, '\x80', '\xBF', 'x'},
          std::string{'\xE2', first, second}, std::string{first, second, '\xBF'}}) {
      std::wstring system(8, L'\0');
      const int size = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                                           static_cast<int>(text.size()), system.data(), 8);
      system.resize(static_cast<size_t>(size));
      ASSERT_EQ(WideFromUtf8(text), size > 0 ? std::optional(system) : std::nullopt)
          << std::hex << value;
    }
  }
}

}  // namespace
}  // namespace ostrell
