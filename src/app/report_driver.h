#pragma once

namespace ostrell {

// One run of all report jobs in their fixed order, each regardless of the others' results. Nothing
// runs when Winsock does not start or when the settings switch reporting off.
void RunReportDriver();

}  // namespace ostrell
