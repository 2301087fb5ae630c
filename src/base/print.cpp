#include "base/print.h"

namespace ostrell {

std::string PrintArguments(std::string_view format, fmt::printf_args arguments) {
  return fmt::vsprintf(format, arguments);
}

std::wstring PrintArguments(std::wstring_view format, fmt::wprintf_args arguments) {
  return fmt::vsprintf(format, arguments);
}

}  // namespace ostrell
