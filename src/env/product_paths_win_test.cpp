#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "base/text.h"
#include "env/product_paths.h"
#include "tests/support/private_registry_win.h"

namespace ostrell {
namespace {

using namespace std::string_view_literals;

constexpr const wchar_t* kProductKey = L"SOFTWARE\\Velmora\\Corvane";

class ProductPathsTest : public testing::Test {
 protected:
  static void SetInstallPath(DWORD type, std::wstring_view characters) {
    PrivateRegistry::SetCharacters(HKEY_LOCAL_MACHINE, kProductKey, L"InstallPath", type,
                                   characters);
  }
  static void SetDataPath(const std::wstring& path) {
    PrivateRegistry::SetText(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velmora\\Corvane\\app", L"DataPath",
                             path);
  }

  PrivateRegistry registry;
};

TEST_F(ProductPathsTest, MissingKeyLeavesThePathUntouched) {
  WidePathText path{L"before"};
  EXPECT_EQ(ReadRegistryPath(kProductKey, L"InstallPath", path), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(path.View(), L"before");
  PrivateRegistry::MakeKey(HKEY_LOCAL_MACHINE, kProductKey);
  EXPECT_EQ(ReadRegistryPath(kProductKey, L"InstallPath", path), ERROR_FILE_NOT_FOUND);
}

TEST_F(ProductPathsTest, ValuesAndWhatTheyGive) {
  const std::wstring longest(512, L'a');
  const struct {
    DWORD type;
    std::wstring_view stored;
    LSTATUS result;
    std::wstring path;
  } cases[] = {
      {REG_SZ, L"C:\\Product\0"sv, 0, L"C:\\Product\\"},
      {REG_SZ, L"C:\\Product\\\0"sv, 0, L"C:\\Product\\"},
      {REG_SZ, L"C:\\a\0hidden\0"sv, 0, L"C:\\a\\"},
      {REG_SZ, L"C:\\a"sv, 0, L"C:\\a\\"},  // no terminator
      {REG_EXPAND_SZ, L"C:\\a\0"sv, ERROR_INVALID_DATA, L"C:\\a\\"},
      {REG_BINARY, L"C:\\a\0"sv, ERROR_INVALID_DATA, L"C:\\a\\"},
      {REG_SZ, L""sv, ERROR_INVALID_DATA, L""},
      {REG_SZ, L"\0"sv, ERROR_INVALID_DATA, L""},
      {REG_SZ, L"\0C:\\\0"sv, ERROR_INVALID_DATA, L""},
      // 1022 bytes; 1024, with and without terminator, leave no room for the backslash; 1026.
      {REG_SZ, {&longest[2], 511}, 0, longest.substr(2) + L'\\'},
      {REG_SZ, {&longest[1], 512}, 0, longest.substr(1)},
      {REG_SZ, {&longest[0], 512}, 0, longest.substr(1)},
      {REG_SZ, {&longest[0], 513}, ERROR_MORE_DATA, L""}};
  for (const auto& row : cases) {
    SCOPED_TRACE(Utf8FromWide(row.stored));
    SetInstallPath(row.type, row.stored);
    WidePathText path;
    EXPECT_EQ(ReadRegistryPath(kProductKey, L"InstallPath", path), row.result);
    EXPECT_EQ(path.View(), row.path);
  }
}

TEST_F(ProductPathsTest, EmptyRegistryGivesEmptyPathsAndBareDatabaseNames) {
  const ProductPaths paths = ReadProductPaths();
  for (const ProductFolder* folder : {&paths.install, &paths.data, &paths.console}) {
    EXPECT_TRUE(folder->wide.IsEmpty() && folder->utf8.IsEmpty());
  }
  EXPECT_EQ(paths.databases[0].View(), "sigdb");
  EXPECT_EQ(paths.databases[24].View(), "adblkuser.db");
}

TEST_F(ProductPathsTest, EachFolderComesFromItsOwnValue) {
  SetInstallPath(REG_SZ, L"C:\\\u20AC\\\0"sv);
  SetDataPath(L"D:\\caf\u00E9");
  PrivateRegistry::SetText(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velmora\\Zentrova", L"InstallPath",
                           L"E:\\console");
  const ProductPaths paths = ReadProductPaths();
  EXPECT_EQ(paths.install.wide.View(), L"C:\\\u20AC\\");
  EXPECT_EQ(paths.install.utf8.View(), "C:\\\xE2\x82\xAC\\");
  EXPECT_EQ(paths.data.wide.View(), L"D:\\caf\u00E9\\");
  EXPECT_EQ(paths.console.utf8.View(), "E:\\console\\");
  EXPECT_EQ(paths.databases[0].View(), "D:\\caf\xC3\xA9\\sigdb");
  EXPECT_EQ(paths.databases[13].View(), "D:\\caf\xC3\xA9\\db\\qxfw.db");
}

TEST_F(ProductPathsTest, FolderOfWrongTypeOrTooLongInUtf8IsEmptyInBothForms) {
  const std::wstring longest = std::wstring(169, L'\u20AC') + L"abc";  // 510 bytes
  SetInstallPath(REG_SZ, longest + L'\0');
  EXPECT_EQ(ReadProductPaths().install.utf8.View().size(), 511U);
  SetInstallPath(REG_SZ, longest + L'd' + L'\0');
  EXPECT_TRUE(ReadProductPaths().install.utf8.IsEmpty());
  EXPECT_TRUE(ReadProductPaths().install.wide.IsEmpty());
  SetInstallPath(REG_EXPAND_SZ, L"C:\\Product\0"sv);
  EXPECT_TRUE(ReadProductPaths().install.utf8.IsEmpty());
  EXPECT_TRUE(ReadProductPaths().install.wide.IsEmpty());
}

TEST_F(ProductPathsTest, DatabasePathIsCutAtItsBuffer) {
  SetDataPath(L"D:\\" + std::wstring(500, L'd') + L"\\");  // 504 bytes
  EXPECT_EQ(ReadProductPaths().databases[24].View(), "D:\\" + std::string(500, 'd') + "\\adblkus");
}

TEST_F(ProductPathsTest, FirstCallDecidesForTheProcess) {
  const std::wstring install(GetProductPaths().install.wide.View());
  SetInstallPath(REG_SZ, L"X:\\later\0"sv);
  EXPECT_EQ(ReadProductPaths().install.wide.View(), L"X:\\later\\");
  EXPECT_EQ(GetProductPaths().install.wide.View(), install);
}

}  // namespace
}  // namespace ostrell
