#include "base/registry_win.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/private_registry_win.h"

namespace ostrell {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr const wchar_t* kSubkey = L"SOFTWARE\\Vendor\\Product";

class RegistryTest : public testing::Test {
 protected:
  static void SetBytes(DWORD type, std::string_view bytes) {
    PrivateRegistry::SetBytes(HKEY_LOCAL_MACHINE, kSubkey, L"Value", type, bytes);
  }
  static std::optional<std::wstring> ReadText(DWORD byteLimit = 64) {
    return WindowsRegistry().ReadText(RegistryRoot::kMachine, kSubkey, L"Value", byteLimit);
  }
  static std::optional<uint32_t> ReadDword() {
    return WindowsRegistry().ReadDword(RegistryRoot::kMachine, kSubkey, L"Value");
  }

  PrivateRegistry registry;
};

TEST_F(RegistryTest, MissingKeyOrValue) {
  EXPECT_EQ(ReadText(), std::nullopt);
  EXPECT_EQ(ReadDword(), std::nullopt);
  RegistryKey key = PrivateRegistry::MakeKey(HKEY_LOCAL_MACHINE, kSubkey);
  EXPECT_EQ(ReadText(), std::nullopt);
  EXPECT_EQ(ReadDword(), std::nullopt);
  EXPECT_EQ(QueryRegistryValue(key.Get(), L"Value", 64).error, ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(OpenRegistryKey(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Missing", KEY_READ, key),
            ERROR_FILE_NOT_FOUND);
  EXPECT_FALSE(key);
}

TEST_F(RegistryTest, ValueAtTheByteLimitAndOnePast) {
  SetBytes(REG_SZ, "a\0b\0c\0\0\0"sv);
  const RegistryKey key = PrivateRegistry::MakeKey(HKEY_LOCAL_MACHINE, kSubkey);
  EXPECT_EQ(QueryRegistryValue(key.Get(), L"Value", 8).data.size(), 8U);
  EXPECT_EQ(ReadText(8), L"abc");
  const RegistryValue cut = QueryRegistryValue(key.Get(), L"Value", 7);
  EXPECT_EQ(cut.error, ERROR_MORE_DATA);
  EXPECT_TRUE(cut.data.empty());
  EXPECT_EQ(ReadText(7), std::nullopt);
}

TEST_F(RegistryTest, TextHasItsTypesAndEndsAtItsFirstZero) {
  for (const DWORD type : {REG_NONE, REG_SZ, REG_EXPAND_SZ, REG_BINARY, REG_DWORD, REG_MULTI_SZ}) {
    SetBytes(type, "%\0\xE9\0\0\0x\0\0\0"sv);
    const bool isText = type == REG_SZ || type == REG_EXPAND_SZ;
    EXPECT_EQ(ReadText(), isText ? std::optional(L"%\u00E9"s) : std::nullopt) << type;
  }
  SetBytes(REG_SZ, "");
  EXPECT_EQ(ReadText(), L"");
  for (const std::string_view bytes : {"a\0"sv, "a\0\0"sv}) {  // see TerminatedText
    SetBytes(REG_SZ, bytes);
    EXPECT_EQ(ReadText(), std::nullopt) << bytes.size();
  }
}

TEST_F(RegistryTest, DwordHasFourBytesAndItsType) {
  SetBytes(REG_DWORD, "\1\2\3\x84");
  EXPECT_EQ(ReadDword(), 0x84030201U);
  for (const std::string_view bytes : {""sv, "\1"sv, "\1\0\0"sv, "\1\0\0\0\0"sv}) {
    SetBytes(REG_DWORD, bytes);
    EXPECT_EQ(ReadDword(), std::nullopt) << bytes.size();
  }
  for (const DWORD type : {REG_BINARY, REG_DWORD_BIG_ENDIAN, REG_QWORD, REG_SZ}) {
    SetBytes(type, "\1\0\0\0"sv);
    EXPECT_EQ(ReadDword(), std::nullopt) << type;
  }
}

TEST_F(RegistryTest, RootsAreApartAndOnlyTheValueIsDeleted) {
  const WindowsRegistry windows;
  PrivateRegistry::SetBytes(HKEY_CURRENT_USER, kSubkey, L"Value", REG_DWORD, "\1\0\0\0"sv);
  PrivateRegistry::SetBytes(HKEY_CURRENT_USER, kSubkey, L"Other", REG_DWORD, "\2\0\0\0"sv);
  SetBytes(REG_DWORD, "\3\0\0\0"sv);
  EXPECT_EQ(windows.ReadDword(RegistryRoot::kUser, kSubkey, L"Value"), 1U);
  windows.DeleteValue(RegistryRoot::kUser, kSubkey, L"Value");
  windows.DeleteValue(RegistryRoot::kUser, L"SOFTWARE\\Missing", L"Value");
  EXPECT_EQ(windows.ReadDword(RegistryRoot::kUser, kSubkey, L"Value"), std::nullopt);
  EXPECT_EQ(windows.ReadDword(RegistryRoot::kUser, kSubkey, L"Other"), 2U);
  EXPECT_EQ(ReadDword(), 3U);
}

}  // namespace
}  // namespace ostrell
