#include "base/registry_text.h"

#include <gtest/gtest.h>

#include <string_view>

#include "base/bytes.h"

namespace ostrell {
namespace {

using namespace std::string_view_literals;

TEST(RegistryTextTest, BytesAndTheirTexts) {
  const std::wstring highest = {L'a', static_cast<wchar_t>(0xFFFF)};
  const std::wstring surrogates = {static_cast<wchar_t>(0xDE00), static_cast<wchar_t>(0xD83D)};
  const struct {
    std::string_view bytes;
    std::wstring upToZero;
    bool isTerminated;
  } cases[] = {{"", L"", true},
               {"\0\0"sv, L"", true},
               {"a\0\xE9\0\xAC\x20\0\0"sv, L"a\u00E9\u20AC", true},
               {"a\0\0\0b\0\0\0"sv, L"a", true},
               {"\0\0b\0\0\0"sv, L"", true},
               {"\0a\0\0"sv, L"\u6100", true},
               {"a\0\xFF\xFF\0\0"sv, highest, true},
               {"\x00\xDE\x3D\xD8\0\0"sv, surrogates, true},
               // The last unit is not zero, whatever stands before it.
               {"a\0"sv, L"a", false},
               {"a\0\0b"sv, L"a\u6200", false},
               {"a\0\0\0b\0"sv, L"a", false},
               // Odd counts of bytes.
               {"\0"sv, L"", false},
               {"\xE9"sv, L"\u00E9", false},
               {"a\0b"sv, L"ab", false},
               {"a\0\0"sv, L"a", false},
               {"a\0\0\0\0"sv, L"a", false},
               {"\0\0b"sv, L"", false}};
  for (const auto& row : cases) {
    SCOPED_TRACE(testing::PrintToString(row.bytes));
    EXPECT_EQ(TextUpToZero(BytesOf(row.bytes)), row.upToZero);
    EXPECT_EQ(TerminatedText(BytesOf(row.bytes)),
              row.isTerminated ? std::optional(row.upToZero) : std::nullopt);
  }
}

}  // namespace
}  // namespace ostrell
