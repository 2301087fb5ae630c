#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "base/text.h"
#include "env/product_paths.h"
#include "tests/support/private_registry_win.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

using namespace std::string_literals;
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

TEST_F(ProductPathsTest, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("product_path")) {
    const auto stored = recorded.All("stored");
    for (size_t i = 0; i < stored.size(); ++i) {
      SCOPED_TRACE(recorded.Name() + ": " + stored[i]);
      SetInstallPath(std::stoul(recorded.All("type").at(i)), WideFromUtf8(stored[i]).value());
      WidePathText path;
      EXPECT_EQ(std::to_string(ReadRegistryPath(kProductKey, L"InstallPath", path)),
                recorded.All("result").at(i));
      EXPECT_EQ(Utf8FromWide(path.View()), recorded.All("path").at(i));
    }
  }
}

TEST_F(ProductPathsTest, EachFolderComesFromItsOwnValueOrIsEmpty) {
  const ProductPaths none = ReadProductPaths();
  for (const ProductFolder* folder : {&none.install, &none.data, &none.console}) {
    EXPECT_TRUE(folder->wide.IsEmpty() && folder->utf8.IsEmpty());
  }
  EXPECT_EQ(none.databases[0].View(), "sigdb");
  EXPECT_EQ(none.databases[24].View(), "adblkuser.db");
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
  for (const DWORD type : {REG_SZ, REG_EXPAND_SZ}) {
    SetInstallPath(type, type == REG_SZ ? longest + L"d\0"s : L"C:\\Product\0"s);
    EXPECT_TRUE(ReadProductPaths().install.utf8.IsEmpty());
    EXPECT_TRUE(ReadProductPaths().install.wide.IsEmpty());
  }
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
