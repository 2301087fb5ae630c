#include <regex>
#include <sstream>
#include <string>
#include <string_view>

#include "base/text.h"
#include "env/client_identity.h"
#include "env/product_paths.h"
#include "tests/support/expect_recorded.h"
#include "tests/support/private_registry_win.h"

namespace ostrell {
namespace {

using namespace std::string_view_literals;

constexpr wchar_t kKey[] = L"SOFTWARE\\Velmora\\Corvane\\app";
constexpr wchar_t kValue[] = L"ClientID";

class ClientIdTest : public testing::Test {
 protected:
  static std::string Read() { return std::string(ReadOrMakeClientId().View()); }

  static RegistryValue Stored() {
    return QueryRegistryValue(PrivateRegistry::MakeKey(HKEY_LOCAL_MACHINE, kKey).Get(), kValue,
                              4096);
  }

  // "new" for the id of a first run, in braces, which leaves itself bare in the registry.
  static std::string ReadStoredOrNew() {
    std::string first = Read();
    static const std::regex kNew("\\{[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\}");
    if (!std::regex_match(first, kNew)) {
      return first;
    }
    const std::string bare = first.substr(1, 36);
    const RegistryValue stored = Stored();
    EXPECT_EQ(stored.type, DWORD{REG_SZ});
    EXPECT_EQ(stored.data.size(), 37 * sizeof(wchar_t));
    EXPECT_EQ(Utf8FromWide(TextOfRegistryValue(stored).value_or(L"")), bare);
    EXPECT_EQ(Read(), bare);
    return "new";
  }

  PrivateRegistry registry;
};

TEST_F(ClientIdTest, RecordedCases) {
  ExpectRecorded("client_id", [](const std::string& input, const RecordedCase&) {
    const std::wstring stored = WideFromUtf8(input).value().erase(0, 2);
    PrivateRegistry::SetCharacters(HKEY_LOCAL_MACHINE, kKey, kValue, input[0] - '0', stored);
    std::string id = ReadStoredOrNew();
    EXPECT_TRUE(id == "new" || Stored().data.size() == stored.size() * sizeof(wchar_t)) << id;
    return id;
  });
  PrivateRegistry::SetBytes(HKEY_LOCAL_MACHINE, kKey, kValue, REG_SZ, "a\0\0"sv);
  EXPECT_EQ(ReadStoredOrNew(), "new");
}

TEST_F(ClientIdTest, MissingValueIsMade) {
  PrivateRegistry::MakeKey(HKEY_LOCAL_MACHINE, kKey);
  EXPECT_EQ(ReadStoredOrNew(), "new");
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

constexpr const wchar_t* kProductKey = L"SOFTWARE\\Velmora\\Corvane";

TEST(ProductPathsTest, MissingKeyLeavesThePathUntouched) {
  const PrivateRegistry registry;
  WidePathText path{L"before"};
  EXPECT_EQ(ReadRegistryPath(kProductKey, L"InstallPath", path), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(path.View(), L"before");
  PrivateRegistry::MakeKey(HKEY_LOCAL_MACHINE, kProductKey);
  EXPECT_EQ(ReadRegistryPath(kProductKey, L"InstallPath", path), ERROR_FILE_NOT_FOUND);
}

// Of type and stored characters the result and the path.
TEST(ProductPathsTest, RecordedCases) {
  const PrivateRegistry registry;
  ExpectRecorded("product_path", [](const std::string& input, const RecordedCase&) {
    PrivateRegistry::SetCharacters(HKEY_LOCAL_MACHINE, kProductKey, L"InstallPath",
                                   std::stoul(input), WideFromUtf8(input.substr(2)).value());
    WidePathText path;
    const auto result = ReadRegistryPath(kProductKey, L"InstallPath", path);
    return std::to_string(result) + ":" + Utf8FromWide(path.View());
  });
}

// Values with ";" between them, each the name of a folder, its type and what is stored. The three
// folders, and the first, the 14th and the last database.
TEST(ProductFolders, RecordedCases) {
  ExpectRecorded("product_folders", [](const std::string& input, const RecordedCase&) {
    const PrivateRegistry registry;
    std::istringstream values(input);
    for (std::string value; std::getline(values, value, ';');) {
      const size_t type = value.find(' ') + 1;
      const bool isData = value.starts_with("data");
      const std::wstring key =
          value.starts_with("console") ? L"SOFTWARE\\Velmora\\Zentrova" : kProductKey;
      PrivateRegistry::SetCharacters(HKEY_LOCAL_MACHINE, (key + (isData ? L"\\app" : L"")).c_str(),
                                     isData ? L"DataPath" : L"InstallPath",
                                     std::stoul(value.substr(type)),
                                     WideFromUtf8(value.substr(type + 2)).value());
    }
    const ProductPaths paths = ReadProductPaths();
    std::string outcome;
    for (const ProductFolder* folder : {&paths.install, &paths.data, &paths.console}) {
      EXPECT_EQ(Utf8FromWide(folder->wide.View()), folder->utf8.View());
      outcome += folder->utf8.CStr() + std::string("|");
    }
    return outcome + paths.databases[0].CStr() + "|" + paths.databases[13].CStr() + "|" +
           paths.databases[24].CStr();
  });
}

TEST(ProductPathsTest, FirstCallDecidesForTheProcess) {
  const PrivateRegistry registry;
  const std::wstring install(GetProductPaths().install.wide.View());
  PrivateRegistry::SetText(HKEY_LOCAL_MACHINE, kProductKey, L"InstallPath", L"X:\\later");
  EXPECT_EQ(ReadProductPaths().install.wide.View(), L"X:\\later\\");
  EXPECT_EQ(GetProductPaths().install.wide.View(), install);
}

}  // namespace
}  // namespace ostrell
