#include "base/registry_win.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <tuple>

#include "base/text.h"
#include "tests/support/expect_recorded.h"
#include "tests/support/private_registry_win.h"

namespace ostrell {
namespace {

using namespace std::string_view_literals;

constexpr const wchar_t* kSubkey = L"SOFTWARE\\Vendor\\Product";

class RegistryTest : public testing::Test {
 protected:
  static std::optional<uint32_t> ReadDword(RegistryRoot root, const wchar_t* name) {
    return WindowsRegistry().ReadDword(root, kSubkey, name);
  }
  // The text, of at most 10 bytes, and the number.
  static std::string Read() {
    const auto text = WindowsRegistry().ReadText(RegistryRoot::kMachine, kSubkey, L"Value", 10);
    const auto number = ReadDword(RegistryRoot::kMachine, L"Value");
    return (text ? "\"" + Utf8FromWide(*text) + "\" " : "none ") +
           (number ? std::to_string(*number) : "none");
  }

  PrivateRegistry registry;
};

TEST_F(RegistryTest, RecordedValues) {
  ExpectRecorded("registry_value", [](const std::string& input, const RecordedCase&) {
    size_t digits = 0;
    const DWORD type = std::stoul(input, &digits);
    PrivateRegistry::SetBytes(HKEY_LOCAL_MACHINE, kSubkey, L"Value", type,
                              input.substr(std::min(digits + 1, input.size())));
    return Read();
  });
}

TEST_F(RegistryTest, MissingKeyOrValue) {
  EXPECT_EQ(Read(), "none none");
  RegistryKey key = PrivateRegistry::MakeKey(HKEY_LOCAL_MACHINE, kSubkey);
  EXPECT_EQ(Read(), "none none");
  EXPECT_EQ(QueryRegistryValue(key.Get(), L"Value", 64).error, ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(OpenRegistryKey(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Missing", KEY_READ, key),
            ERROR_FILE_NOT_FOUND);
  EXPECT_FALSE(key);
}

TEST_F(RegistryTest, ValueAtTheByteLimitAndOnePast) {
  PrivateRegistry::SetText(HKEY_LOCAL_MACHINE, kSubkey, L"Value", L"abc");
  const RegistryKey key = PrivateRegistry::MakeKey(HKEY_LOCAL_MACHINE, kSubkey);
  EXPECT_EQ(QueryRegistryValue(key.Get(), L"Value", 8).data.size(), 8U);
  const RegistryValue cut = QueryRegistryValue(key.Get(), L"Value", 7);
  EXPECT_EQ(cut.error, ERROR_MORE_DATA);
  EXPECT_TRUE(cut.data.empty());
}

TEST_F(RegistryTest, RootsAreApartAndOnlyTheValueIsDeleted) {
  for (const auto& [root, name, byte] : {std::tuple(HKEY_CURRENT_USER, L"Value", "\1\0\0\0"sv),
                                         {HKEY_CURRENT_USER, L"Other", "\2\0\0\0"sv},
                                         {HKEY_LOCAL_MACHINE, L"Value", "\3\0\0\0"sv}}) {
    PrivateRegistry::SetBytes(root, kSubkey, name, REG_DWORD, byte);
  }
  EXPECT_EQ(ReadDword(RegistryRoot::kUser, L"Value"), 1U);
  WindowsRegistry().DeleteValue(RegistryRoot::kUser, kSubkey, L"Value");
  WindowsRegistry().DeleteValue(RegistryRoot::kUser, L"SOFTWARE\\Missing", L"Value");
  EXPECT_EQ(ReadDword(RegistryRoot::kUser, L"Value"), std::nullopt);
  EXPECT_EQ(ReadDword(RegistryRoot::kUser, L"Other"), 2U);
  EXPECT_EQ(ReadDword(RegistryRoot::kMachine, L"Value"), 3U);
}

}  // namespace
}  // namespace ostrell
