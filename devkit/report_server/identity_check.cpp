#include "devkit/report_server/identity_check.h"

#include <array>
#include <regex>
#include <utility>

#include "devkit/report_server/request_summary.h"

namespace ostrell {

std::string WrongIdentity(const json_t* line, const json_t* machineInformation) {
  const std::string guid = "[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}";
  const std::array rules = {std::pair("u", std::regex("[0-9A-F]{40}")),
                            std::pair("regid", std::regex(guid + "|\\{" + guid + "\\}"))};
  std::string wrong;
  const auto add = [&](const char* key) { wrong.append(wrong.empty() ? "" : " ").append(key); };
  for (const auto& [key, form] : rules) {
    const std::string value = QueryValueOf(line, key);
    const bool isOther = machineInformation != nullptr && value != TextOf(machineInformation, key);
    if (isOther || !std::regex_match(value, form)) {
      add(key);
    }
  }
  if (TextOf(line, "report") == "rc4" && QueryValueOf(line, "v") != "5") {
    add("v");
  }
  return wrong;
}

}  // namespace ostrell
