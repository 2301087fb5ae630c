#pragma once

#include <vector>

#include "base/json.h"
#include "devkit/report_server/reported_machine.h"

namespace ostrell {

// Prints what became of each file that the machine's records and its quarantine name: whether the
// server was asked about it, knew it and received it, or why not, which is found by looking at the
// file and the entry. False when a file is missing without a reason, or was asked about against
// one, or when a request for a sample belongs to no file.
bool PrintSamples(const ReportedMachine& machine, const std::vector<JsonOwner>& requests);

}  // namespace ostrell
