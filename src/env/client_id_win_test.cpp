#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "base/text.h"
#include "env/client_identity.h"
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
    ASSERT_TRUE(
        std::regex_match(first, std::regex("\\{[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\}")))
        << first;
    const std::string bare = first.substr(1, 36);
    const RegistryValue stored = Stored();
    EXPECT_EQ(stored.type, DWORD{REG_SZ});
    EXPECT_EQ(stored.data.size(), 37 * sizeof(wchar_t));
    EXPECT_EQ(Utf8FromWide(TextOfRegistryValue(stored).value_or(L"")), bare);
    EXPECT_EQ(Read(), bare);
  }

  PrivateRegistry registry;
};

TEST_F(ClientIdTest, StoredTextIsTakenAsItStands) {
  const std::wstring longest = std::wstring(259, L'x') + L'\0';
  const struct {
    DWORD type;
    std::wstring_view stored;
    std::string id;
  } cases[] = {{REG_SZ, L"6F9619FF-8B86\0"sv, "6F9619FF-8B86"},
               {REG_EXPAND_SZ, L"{%windir%}\0"sv, "{%windir%}"},
               {REG_SZ, L"\0"sv, ""},
               {REG_SZ, L""sv, ""},
               {REG_SZ, longest, std::string(127, 'x')}};
  for (const auto& row : cases) {
    Store(row.type, row.stored);
    EXPECT_EQ(Read(), row.id);
    EXPECT_EQ(Stored().data.size(), row.stored.size() * sizeof(wchar_t));
  }
}

TEST_F(ClientIdTest, MissingLongOrDamagedValueIsReplaced) {
  PrivateRegistry::MakeKey(HKEY_LOCAL_MACHINE, kKey);
  ExpectNewGuid();
  Store(REG_SZ, std::wstring(260, L'x') + L'\0');
  ExpectNewGuid();
  Store(REG_SZ, L"no terminator");
  ExpectNewGuid();
  Store(REG_BINARY, L"binary\0"sv);
  ExpectNewGuid();
  PrivateRegistry::SetBytes(HKEY_LOCAL_MACHINE, kKey, kValue, REG_SZ, "a\0\0"sv);
  ExpectNewGuid();
}

// Without the key each run makes another.
TEST_F(ClientIdTest, IdentityOfThisMachineStays) {
  IdentityText machine("old");
  IdentityText client("old");
  EXPECT_EQ(ComputeIdentity(machine, client), 0);
  EXPECT_TRUE(std::regex_match(std::string(machine.View()), std::regex("[0-9A-F]{40}")));
  EXPECT_EQ(client.View().size(), 38U);
  IdentityText again;
  EXPECT_EQ(ComputeIdentity(again, client), 0);
  EXPECT_EQ(again.View(), machine.View());
  EXPECT_NE(Read(), client.View());
  EXPECT_EQ(Stored().error, ERROR_FILE_NOT_FOUND);
}

}  // namespace
}  // namespace ostrell
