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
