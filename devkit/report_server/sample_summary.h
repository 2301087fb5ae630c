#pragma once

#include <vector>

#include "base/json.h"
#include "devkit/report_server/expected_run.h"

namespace ostrell {

// Prints what became of each file that the sample product's records and quarantine name: whether
// the server was asked about it, knew it and received it, or why not. A file that is MISSING or
// that something WRONG happened to is marked, as is a request for a sample that belongs to no file;
// false when there is one. Appends what was not sent to the array `notSent`, as objects of
// "report", "what" and "why".
bool PrintSamples(const ExpectedRun& expected, const std::vector<JsonOwner>& requests,
                  json_t* notSent);

}  // namespace ostrell
