#pragma once

#include <functional>
#include <string_view>

#include "devkit/product/recorded_event.h"

namespace ostrell {

// Decides whether a query selects an event.
using EventCondition = std::function<bool(const EventSystem&)>;

// The condition of an XPath expression of the event service (the vendor's "Consuming Events"):
//
//   select     = "*" | "*[System[" any "]]"
//   any        = every { "or" every }
//   every      = term { "and" term }
//   term       = "(" any ")" | member operator value
//   member     = "Provider/@Name" | "EventID" | "Level" | "TimeCreated/@SystemTime"
//   operator   = "=" | ">=" | "<="        with the provider's name "=" only
//   value      = decimal number, or in single quotes a name or a time
//
// with any blanks between words and at most 32 parentheses in one another. A comparison with a
// member that has no value is false. Empty for every other text.
EventCondition ParseEventCondition(std::string_view xpath);

}  // namespace ostrell
