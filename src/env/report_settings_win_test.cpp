#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "env/report_settings.h"
#include "tests/support/private_registry_win.h"

namespace ostrell {
namespace {

using namespace std::string_view_literals;

constexpr const wchar_t* kSubkey = L"SOFTWARE\\Velmora\\Corvane\\Ostrell";

class ReportSettingsTest : public testing::Test {
 protected:
  static std::string LinkOf(DWORD type, std::wstring_view characters) {
    PrivateRegistry::SetCharacters(HKEY_LOCAL_MACHINE, kSubkey, L"ReportLink", type, characters);
    return ReadReportLink();
  }
  static uint32_t IntervalOf(DWORD type, std::string_view bytes) {
    PrivateRegistry::SetBytes(HKEY_LOCAL_MACHINE, kSubkey, L"MinReportInterval", type, bytes);
    return ReadMinReportInterval();
  }

  PrivateRegistry registry;
};

TEST_F(ReportSettingsTest, LinkIsUtf8AndEmptyWhenInvalid) {
  EXPECT_EQ(ReadReportLink(), "");
  EXPECT_EQ(LinkOf(REG_SZ, L"https://\u20AC.example/\U0001F600\0"sv),
            "https://\xE2\x82\xAC.example/\xF0\x9F\x98\x80");
  EXPECT_EQ(LinkOf(REG_EXPAND_SZ, L"https://%OS%/\0b\0"sv), "https://%OS%/");
  EXPECT_EQ(LinkOf(REG_SZ, L"https://a.example"), "");  // no terminator
  EXPECT_EQ(LinkOf(REG_BINARY, L"https://a.example\0"sv), "");
  const std::wstring longest(519, L'a');  // 1040 bytes with its terminator
  EXPECT_EQ(LinkOf(REG_SZ, longest + L'\0'), std::string(519, 'a'));
  EXPECT_EQ(LinkOf(REG_SZ, longest + L'a' + L'\0'), "");
}

TEST_F(ReportSettingsTest, IntervalIsTakenAsStoredAndTheDefaultWhenInvalid) {
  EXPECT_EQ(ReadMinReportInterval(), 14400U);
  EXPECT_EQ(IntervalOf(REG_DWORD, "\1\0\0\0"sv), 1U);
  EXPECT_EQ(IntervalOf(REG_DWORD, "\xFF\xFF\xFF\xFF"), 4294967295U);
  EXPECT_EQ(IntervalOf(REG_DWORD, "\0\0\0\0"sv), 14400U);
  EXPECT_EQ(IntervalOf(REG_DWORD, "\1\0"sv), 14400U);
  EXPECT_EQ(IntervalOf(REG_QWORD, "\1\0\0\0\0\0\0\0"sv), 14400U);
}

}  // namespace
}  // namespace ostrell
