#include "devkit/viewer/fault_switch_json.h"

#include <random>
#include <string_view>

#include "devkit/report_server/json_text.h"

namespace ostrell {

JsonOwner DescribeSwitch(const FaultEntry& fault, const FaultSwitches::State* state) {
  JsonOwner row(json_object());
  json_object_set_new(row.Get(), "name", JsonString(fault.name).Release());
  json_object_set_new(row.Get(), "help", JsonString(fault.help).Release());
  json_object_set_new(row.Get(), "isOn", json_boolean(state != nullptr));
  if (state == nullptr) {
    return row;
  }
  const FaultSwitch& how = state->how;
  const auto set = [&row](const char* name, uint64_t number) {
    json_object_set_new(row.Get(), name, json_integer(static_cast<json_int_t>(number)));
  };
  json_object_set_new(row.Get(), "report", JsonString(how.report).Release());
  json_object_set_new(row.Get(), "probability", json_real(how.probability));
  set("after", how.after);
  set("seed", how.seed);
  set("concerned", state->concerned);
  set("acted", state->acted);
  if (how.times) {
    set("times", *how.times);
  }
  return row;
}

std::optional<FaultSwitch> SwitchOf(const json_t* wanted) {
  FaultSwitch how{.seed = std::random_device()()};
  if (!json_is_object(wanted)) {
    return std::nullopt;
  }
  const char* name = nullptr;
  json_t* value = nullptr;
  json_object_foreach(const_cast<json_t*>(wanted), name, value) {
    const std::string_view key = name;
    const auto number = json_is_integer(value) && json_integer_value(value) >= 0
                            ? std::optional<uint64_t>(json_integer_value(value))
                            : std::nullopt;
    if (key == "report" && json_is_string(value)) {
      how.report = json_string_value(value);
    } else if (key == "probability" && json_is_number(value)) {
      how.probability = json_number_value(value);
    } else if (key == "after" && number) {
      how.after = *number;
    } else if (key == "times" && number) {
      how.times = number;
    } else if (key == "seed" && number) {
      how.seed = static_cast<uint32_t>(*number);
    } else {
      return std::nullopt;
    }
  }
  return how;
}

}  // namespace ostrell
