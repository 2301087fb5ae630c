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

}  // namespace ostrell
