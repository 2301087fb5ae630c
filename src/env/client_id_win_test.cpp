#include "env/client_id_win.h"

#include <gmock/gmock.h>

#include <string>

#include "base/text.h"
#include "tests/support/private_registry_win.h"

namespace ostrell {
namespace {

using namespace std::string_view_literals;

constexpr wchar_t kKey[] = L"SOFTWARE\\Velmora\\Corvane\\app";
constexpr wchar_t kValue[] = L"ClientID";

class ClientIdTest : public testing::Test {
 protected:
  static std::string Read() { return std::string(ReadOrMakeClientId().View()); }

  static void Store(DWORD type, std::wstring_view characters) {
    PrivateRegistry::SetCharacters(HKEY_LOCAL_MACHINE, kKey, kValue, type, characters);
  }
  static RegistryValue Stored() {
    return QueryRegistryValue(PrivateRegistry::MakeKey(HKEY_LOCAL_MACHINE, kKey).Get(), kValue,
                              4096);
  }

  // The id of a first run, in braces, and what it left in the registry.
  static void ExpectNewGuid() {
    const std::string first = Read();
    ASSERT_EQ(first.size(), 38U);
    const std::string bare = first.substr(1, 36);
    EXPECT_EQ(first, "{" + bare + "}");
    for (size_t i = 0; i < bare.size(); ++i) {
      const bool isDash = i == 8 || i == 13 || i == 18 || i == 23;
      EXPECT_NE((isDash ? "-"sv : "0123456789ABCDEF"sv).find(bare[i]), std::string::npos) << first;
    }
    const RegistryValue stored = Stored();
    EXPECT_EQ(stored.type, DWORD{REG_SZ});
    EXPECT_EQ(stored.data.size(), 37 * sizeof(wchar_t));
    EXPECT_EQ(Utf8FromWide(TextOfRegistryValue(stored).value_or(L"")), bare);
    EXPECT_EQ(Read(), bare);
  }

  PrivateRegistry registry;
};

TEST_F(ClientIdTest, StoredTextIsTakenAsItStands) {
  const struct {
    DWORD type;
    std::wstring_view stored;
    std::string_view id;
  } cases[] = {{REG_SZ, L"6F9619FF-8B86\0"sv, "6F9619FF-8B86"},
               {REG_EXPAND_SZ, L"{%windir%}\0"sv, "{%windir%}"},
               {REG_SZ, L"\0"sv, ""},
               {REG_SZ, L""sv, ""}};
  for (const auto& row : cases) {
    Store(row.type, row.stored);
    EXPECT_EQ(Read(), row.id);
    EXPECT_EQ(Stored().data.size(), row.stored.size() * sizeof(wchar_t));
  }
}

TEST_F(ClientIdTest, MissingOrDamagedValueIsReplaced) {
  PrivateRegistry::MakeKey(HKEY_LOCAL_MACHINE, kKey);
  ExpectNewGuid();
  Store(REG_SZ, L"no terminator");
  ExpectNewGuid();
  Store(REG_BINARY, L"binary\0"sv);
  ExpectNewGuid();
  PrivateRegistry::SetBytes(HKEY_LOCAL_MACHINE, kKey, kValue, REG_SZ, "a\0\0"sv);
  ExpectNewGuid();
}

TEST_F(ClientIdTest, TextOfMoreThan520BytesIsReplaced) {
  Store(REG_SZ, std::wstring(259, L'x') + L'\0');
  EXPECT_EQ(Read(), std::string(127, 'x'));
  Store(REG_SZ, std::wstring(260, L'x') + L'\0');
  ExpectNewGuid();
}

TEST_F(ClientIdTest, WithoutTheKeyEachRunMakesAnother) {
  const std::string first = Read();
  EXPECT_EQ(first.size(), 38U);
  EXPECT_NE(Read(), first);
  EXPECT_EQ(Stored().error, ERROR_FILE_NOT_FOUND);
}

TEST_F(ClientIdTest, IdentityOfThisMachineStays) {
  IdentityText machine("old");
  IdentityText client("old");
  EXPECT_EQ(ComputeIdentity(machine, client), 0);
  EXPECT_EQ(machine.View().size(), 40U);
  EXPECT_EQ(machine.View().find_first_not_of("0123456789ABCDEF"), std::string_view::npos);
  EXPECT_EQ(client.View().size(), 38U);
  IdentityText again;
  EXPECT_EQ(ComputeIdentity(again, client), 0);
  EXPECT_EQ(again.View(), machine.View());
}

}  // namespace
}  // namespace ostrell
