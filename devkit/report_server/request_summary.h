#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/json.h"
#include "devkit/report_server/expected_run.h"

namespace ostrell {

// What the requests of one run say, for people.

// The lines of requests.jsonl in the server's folder `store` behind the first `after`, as
// docs/report-protocol.md describes them. Lines that are no JSON are left out.
std::vector<JsonOwner> LoadRequests(const std::filesystem::path& store, size_t after);

// Members of such a line, "" or "-" where there is none.
std::string TextOf(const json_t* line, const char* member);
std::string NumberOf(const json_t* line, const char* member);
// A decoded value of its query; "" where there is none.
std::string QueryValueOf(const json_t* line, const char* name);

// True for an answer to rc1 with 200, and for a PUT whose digest, stream and JSON are sound.
bool HasArrived(const json_t* line);

// What became of the reports of a run, by their names.
struct ReportVerdict {
  std::set<std::string> arrived;    // not an rc7 whose client fields are not those of rc1
  std::set<std::string> misnaming;  // one of their requests has a WrongIdentity
  std::set<std::string> differing;  // sent for the first time, with other items than expected
};

// Prints the requests as they came in, and behind each upload what it holds, and judges them.
ReportVerdict PrintRequests(const std::vector<JsonOwner>& requests,
                            const std::filesystem::path& store, const ExpectedRun& expected);

}  // namespace ostrell
