#include <windows.h>

#include <string>

#include "base/registry_text.h"
#include "base/registry_win.h"
#include "base/text.h"
#include "env/product_paths.h"

namespace ostrell {
namespace {

constexpr DWORD kValueLimit = kPathSize * sizeof(wchar_t);

ProductFolder ReadFolder(const wchar_t* subkey, const wchar_t* valueName) {
  ProductFolder folder;
  if (ReadRegistryPath(subkey, valueName, folder.wide) != ERROR_SUCCESS) {
    return {};
  }
  const std::string utf8 = Utf8FromWide(folder.wide.View());
  if (utf8.size() >= kPathSize) {
    return {};
  }
  folder.utf8 = PathText(utf8);
  return folder;
}

}  // namespace

int32_t ReadRegistryPath(const wchar_t* subkey, const wchar_t* valueName, WidePathText& path) {
  RegistryKey key;
  if (const LSTATUS error = OpenRegistryKey(HKEY_LOCAL_MACHINE, subkey, KEY_READ, key)) {
    return error;
  }
  const RegistryValue value = QueryRegistryValue(key.Get(), valueName, kValueLimit);
  if (value.error != ERROR_SUCCESS) {
    return value.error;
  }
  path = WidePathText(TextUpToZero(value.data));  // of whatever type
  if (path.IsEmpty()) {
    return ERROR_INVALID_DATA;
  }
  if (path.View().back() != L'\\') {
    path.Append(L"\\");
  }
  return value.type == REG_SZ ? ERROR_SUCCESS : ERROR_INVALID_DATA;
}

ProductPaths ReadProductPaths() {
  ProductPaths paths;
  paths.install = ReadFolder(L"SOFTWARE\\Velmora\\Corvane", L"InstallPath");
  paths.data = ReadFolder(L"SOFTWARE\\Velmora\\Corvane\\app", L"DataPath");
  paths.console = ReadFolder(L"SOFTWARE\\Velmora\\Zentrova", L"InstallPath");
  for (size_t row = 0; row < kDatabaseNames.size(); ++row) {
    paths.databases[row] = PathText::Print("%s%s", paths.data.utf8.View(), kDatabaseNames[row]);
  }
  return paths;
}

const ProductPaths& GetProductPaths() {
  static const ProductPaths paths = ReadProductPaths();
  return paths;
}

}  // namespace ostrell
