#include "base/text_win.h"

#include <windows.h>

namespace ostrell {

std::string ThreadAnsiFromWide(std::wstring_view text) {
  const int length = static_cast<int>(text.size());
  const int size =
      WideCharToMultiByte(CP_THREAD_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_THREAD_ACP, 0, text.data(), length, result.data(), size, nullptr, nullptr);
  return result;
}

std::optional<std::wstring> WideFromUtf8(const char* text) {
  if (text == nullptr || *text == '\0') {
    return std::nullopt;
  }
  // The terminator is counted and converted with the text.
  const int size = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, -1, nullptr, 0);
  if (size <= 0) {
    return std::nullopt;
  }
  std::wstring wide(static_cast<size_t>(size), L'\0');
  MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, -1, wide.data(), size);
  wide.pop_back();
  return wide;
}

}  // namespace ostrell
