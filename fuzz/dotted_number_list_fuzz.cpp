#include <regex>
#include <string>
#include <string_view>

#include "env/dotted_number_list.h"
#include "fuzz/fuzz_target.h"

namespace {

// The same grammar as a regular expression. No text fits its parts in two ways, so that matching
// does not go back over numbers.
const std::regex& Grammar() {
  static const std::regex grammar = [] {
    const std::string number = R"((?:0+|0*(?:25[0-5]|2[0-4]\d|1\d\d|[1-9]\d|[1-9])))";
    const std::string prefix = R"((?:0+|0*(?:3[0-2]|[12]\d|[1-9])))";
    const std::string quad = number + R"((?:\.)" + number + "){3}";
    const std::string item = quad + "(?:/" + prefix + "|-" + quad + ")?";
    return std::regex("(?:" + item + R"([;,\n])*(?:)" + item + R"(|\*)?)");
  }();
  return grammar;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 1024) {
    return 0;  // std::regex needs stack for each character
  }
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  ostrell::Require(ostrell::IsDottedNumberList(text) ==
                   std::regex_match(text.begin(), text.end(), Grammar()));
  return 0;
}
