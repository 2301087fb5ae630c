#include "base/print.h"

#include <fmt/args.h>
#include <fmt/printf.h>
#include <fmt/xchar.h>

namespace ostrell {
namespace {

template <class Char>
std::basic_string<Char> Printed(std::basic_string_view<Char> format,
                                std::span<const PrintArgument<Char>> arguments) {
  using Context = fmt::basic_printf_context_t<Char>;
  fmt::dynamic_format_arg_store<Context> list;
  list.reserve(arguments.size(), 0);
  for (const PrintArgument<Char>& argument : arguments) {
    std::visit([&list](const auto& value) { list.push_back(value); }, argument);
  }
  return fmt::vsprintf(fmt::basic_string_view<Char>(format.data(), format.size()),
                       fmt::basic_format_args<Context>(list));
}

}  // namespace

std::string PrintArguments(std::string_view format,
                           std::span<const PrintArgument<char>> arguments) {
  return Printed(format, arguments);
}

std::wstring PrintArguments(std::wstring_view format,
                            std::span<const PrintArgument<wchar_t>> arguments) {
  return Printed(format, arguments);
}

}  // namespace ostrell
