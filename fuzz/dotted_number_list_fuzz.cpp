#include <regex>
#include <string>

#include "env/dotted_number_list.h"
#include "fuzz/fuzz_target.h"

namespace ostrell {
namespace {

// The same grammar as a regular expression. No text fits its parts in two ways, so that matching
// does not go back over numbers.
std::string Grammar() {
  const std::string number = R"((?:0+|0*(?:25[0-5]|2[0-4]\d|1\d\d|[1-9]\d|[1-9])))";
  const std::string prefix = R"((?:0+|0*(?:3[0-2]|[12]\d|[1-9])))";
  const std::string quad = number + R"((?:\.)" + number + "){3}";
  const std::string item = quad + "(?:/" + prefix + "|-" + quad + ")?";
  return "(?:" + item + R"([;,\n])*(?:)" + item + R"(|\*)?)";
}

}  // namespace

void CheckInput(std::string_view input) {
  static const std::regex kGrammar(Grammar());
  // std::regex needs stack for each character.
  Require(input.size() > 1024 ||
          IsDottedNumberList(input) == std::regex_match(input.begin(), input.end(), kGrammar));
}

}  // namespace ostrell
