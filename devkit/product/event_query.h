#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "devkit/product/event_condition.h"

namespace ostrell {

struct EventQuery {
  std::string channel;
  EventCondition condition;  // empty when the expression cannot be parsed
};

// A query list document of the event service with one query of one select, both of one channel:
//
//   <QueryList><Query Id="0" Path="System"><Select Path="System">*</Select></Query></QueryList>
//
// Nothing for every other document, further elements and attributes included.
std::optional<EventQuery> ParseEventQuery(std::string_view document);

}  // namespace ostrell
