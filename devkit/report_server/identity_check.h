#pragma once

#include <string>

#include "base/json.h"

namespace ostrell {

// Which values of a report's request are not what they have to be, as "u regid v"; "" when all are.
// "u" has to be 40 upper-case hexadecimal digits, "regid" a GUID, bare or in braces, and both what
// `machineInformation` has, the query of the same run's rc1; null judges their form alone. "v" is
// judged for rc4, where it is "5". What is missing is wrong. `line` is one of requests.jsonl.
std::string WrongIdentity(const json_t* line, const json_t* machineInformation);

}  // namespace ostrell
