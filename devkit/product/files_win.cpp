#include "devkit/product/files_win.h"

namespace ostrell {

std::optional<std::wstring> PathBesideProgram(const wchar_t* fileName) {
  wchar_t program[MAX_PATH];
  const DWORD length = GetModuleFileNameW(nullptr, program, MAX_PATH);
  if (length == 0 || length >= MAX_PATH) {
    return std::nullopt;
  }
  const std::wstring path(program, length);
  return path.substr(0, path.rfind(L'\\') + 1) + fileName;
}

FileContent ReadWholeFile(const std::wstring& path) {
  const FileHandle file(CreateFileW(path.c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  LARGE_INTEGER size{};
  if (!file || !GetFileSizeEx(file.Get(), &size)) {
    return {GetLastError(), {}};
  }
  if (static_cast<uint64_t>(size.QuadPart) > kFileLimit) {
    return {ERROR_FILE_TOO_LARGE, {}};
  }
  std::string text(static_cast<size_t>(size.QuadPart), '\0');
  DWORD taken = 0;
  if (!ReadFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &taken, nullptr)) {
    return {GetLastError(), {}};
  }
  text.resize(taken);
  return {ERROR_SUCCESS, std::move(text)};
}

bool WriteOnce(const FileHandle& file, std::string_view text) {
  DWORD taken = 0;
  return WriteFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &taken, nullptr) &&
         taken == text.size();
}

}  // namespace ostrell
