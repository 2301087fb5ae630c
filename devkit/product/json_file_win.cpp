#include "devkit/product/json_file_win.h"

#include "devkit/product/files_win.h"

namespace ostrell {
namespace {

// Empty when it cannot be written.
std::string IndentedText(json_t* value) {
  constexpr size_t kFlags = JSON_INDENT(2);
  std::string text(json_dumpb(value, nullptr, 0, kFlags), '\0');
  json_dumpb(value, text.data(), text.size(), kFlags);
  return text;
}

bool WriteAnew(const std::wstring& path, std::string_view text) {
  const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  return file && WriteOnce(file, text) && FlushFileBuffers(file.Get());
}

bool IsArrayOfObjects(const json_t* value) {
  size_t i = 0;
  const json_t* element = nullptr;
  json_array_foreach(value, i, element) {
    if (!json_is_object(element)) {
      return false;
    }
  }
  return json_is_array(value);
}

}  // namespace

JsonFile LoadJsonFile(const std::wstring& path) {
  const FileContent content = ReadWholeFile(path);
  if (content.error != ERROR_SUCCESS) {
    return {content.error, {}};
  }
  JsonOwner value(
      json_loadb(content.text.data(), content.text.size(), JSON_REJECT_DUPLICATES, nullptr));
  return {value ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_INVALID_DATA}, std::move(value)};
}

JsonOwner LoadObjectArray(const std::wstring& path) {
  JsonFile file = LoadJsonFile(path);
  if (file.error == ERROR_FILE_NOT_FOUND || file.error == ERROR_PATH_NOT_FOUND) {
    return JsonOwner(json_array());
  }
  return IsArrayOfObjects(file.value.Get()) ? std::move(file.value) : JsonOwner();
}

bool SaveJsonFile(const std::wstring& path, json_t* value) {
  const std::string text = IndentedText(value);
  if (text.empty()) {
    return false;
  }
  CreateDirectoryW(path.substr(0, path.rfind(L'\\')).c_str(), nullptr);
  const std::wstring beside = path + L".new";
  if (WriteAnew(beside, text + '\n') &&
      MoveFileExW(beside.c_str(), path.c_str(),
                  MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
    return true;
  }
  DeleteFileW(beside.c_str());
  return false;
}

}  // namespace ostrell
