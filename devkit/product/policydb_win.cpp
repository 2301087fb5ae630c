// Stand-in for the product's policy database library. Its state is JSON files under the product's
// data path: "settings\<feature>.json", "documents\<number>.json", "records.json" for document 0,
// the record store, and the folder "quarantine".

#include <string_view>

#include "base/json.h"
#include "base/text.h"
#include "devkit/product/files_win.h"
#include "devkit/product/guarded.h"
#include "devkit/product/json_file_win.h"
#include "devkit/product/quarantine_folder_win.h"
#include "devkit/product/record_query_evaluation.h"
#include "devkit/product/settings_file_win.h"
#include "platform/policydb.h"

namespace ostrell {
namespace {

constexpr int32_t kRecordStore = 0;

class DocumentFile final : public PolicyDocument {
 public:
  DocumentFile(JsonOwner content, bool holdsRecords)
      : document(std::move(content)), isRecordStore(holdsRecords) {}

  void Reserved0() noexcept override {}
  void Reserved1() noexcept override {}
  void Release() noexcept override { delete this; }
  void Reserved3() noexcept override {}
  json_t* Json() noexcept override { return json_incref(document.Get()); }
  void Reserved5() noexcept override {}
  void Reserved6() noexcept override {}
  // Null for what is not the record store, and for what cannot be evaluated.
  json_t* Query(json_t* descriptor) noexcept override {
    return Guarded<json_t*>(nullptr, [&]() -> json_t* {
      return isRecordStore ? EvaluateRecordQuery(document.Get(), descriptor).Release() : nullptr;
    });
  }

 private:
  JsonOwner document;
  bool isRecordStore;
};

// The content of a document; empty when its file is missing, unless it is the record store's, or
// damaged.
JsonOwner LoadDocument(const std::wstring& folder, int32_t number) {
  return number == kRecordStore
             ? LoadObjectArray(folder + L"records.json")
             : LoadJsonFile(folder + L"documents\\" + std::to_wstring(number) + L".json").value;
}

bool IsFolder(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// `folder` ending with a backslash; empty unless it is a folder.
std::wstring ExistingFolder(std::wstring folder) {
  if (!IsFolder(folder)) {
    return {};
  }
  if (folder.back() != L'\\') {
    folder += L'\\';
  }
  return folder;
}

// Empty when the product names no data path or it does not exist.
std::wstring DataFolder() {
  wchar_t value[MAX_PATH];
  DWORD size = sizeof value;
  const LSTATUS error = RegGetValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velmora\\Corvane\\app",
                                     L"DataPath", RRF_RT_REG_SZ, nullptr, value, &size);
  return error == ERROR_SUCCESS ? ExistingFolder(value) : std::wstring();
}

// Letters, digits, '-' and '_': the name becomes a file's.
bool IsFeatureName(std::string_view name) {
  constexpr std::string_view kAllowed =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_";
  return !name.empty() && name.find_first_not_of(kAllowed) == std::string_view::npos;
}

}  // namespace

// The document of that number; null when the data path is missing, or as LoadDocument says.
extern "C" PolicyDocument* OpenDocument(int32_t number, const char* dataPath) {
  return Guarded<PolicyDocument*>(nullptr, [&]() -> PolicyDocument* {
    const std::wstring folder = ExistingFolder(WideFromUtf8(dataPath).value_or(L""));
    if (folder.empty()) {
      return nullptr;
    }
    JsonOwner content = LoadDocument(folder, number);
    return content ? new DocumentFile(std::move(content), number == kRecordStore) : nullptr;
  });
}

// The quarantine of the product; null when there is no data path.
extern "C" Quarantine* OpenQuarantineFolder() {
  return Guarded<Quarantine*>(nullptr, []() -> Quarantine* {
    const std::wstring folder = DataFolder();
    return folder.empty() ? nullptr : new QuarantineFolder(folder + L"quarantine\\");
  });
}

// The settings section of a feature; null when there is no data path, the name cannot be a file's,
// or the file is damaged.
extern "C" SettingsStore* OpenSettings(const char* feature) {
  return Guarded<SettingsStore*>(nullptr, [&]() -> SettingsStore* {
    const std::wstring folder = DataFolder();
    if (folder.empty() || feature == nullptr || !IsFeatureName(feature)) {
      return nullptr;
    }
    const std::wstring name(feature, feature + std::string_view(feature).size());
    return SettingsFile::Open(folder + L"settings\\" + name + L".json");
  });
}

}  // namespace ostrell
