#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/json.h"

namespace ostrell {

// What a run on the sample product is to bring. All of it stands in devkit/sample/expected.json:
//
//   "look_back"  seconds: no report covers more
//   "reports"    a row for each report, or each part of one that has a last-report time of its own
//     "report"       "rc2"
//     "key"          of its last-report time in the settings; without it, it is always due
//     "interval"     seconds since that time, and "due", how it is compared with them: ">" or ">="
//     "needs"        a file of the data folder; where it is missing, nothing is due
//     "holds"        members of its items; how many items of a report that is sent for the first
//                    time have which value, null for at least one. Good for a sample of today.
//     "found_by"     the samples that it sends, those of the first word first
//     "if_none"      said in place of all of them when the period has none of the first word
//     "if_older"     said of those before the period; without it they are left out
//     "if_no_answer" said in place of all of them when rc1 was not answered
//   "samples"    what becomes of each file that records or quarantine name, in the agent's order
//     "found_by", "time", "file"  its path, and when it came to be known, seconds since 1970
//     "asked"      "disk" or "quarantine", the server's "known", the bytes "sent"; none: it is not
//     "why"        the reason
//     "after"      the reason counts, and the file is not asked about, only after so many were sent
class ExpectedRun {
 public:
  // `list` is the document with its times filled in; null expects nothing. `before` is a copy of
  // the product's data folder as the run found it: without settings all was last reported in 1970.
  // `now` is when the run began, seconds since 1970.
  ExpectedRun(JsonOwner list, std::filesystem::path before, int64_t now);

  // The rows, in their order. They live as long as this.
  std::vector<const json_t*> Reports() const { return Rows("reports"); }
  std::vector<const json_t*> Samples() const { return Rows("samples"); }

  // Why a row of the reports is not due; empty when it is.
  std::string WhyNotDue(const json_t* row) const;
  // Where the period of such a row begins, seconds since 1970.
  int64_t StartOf(const json_t* row) const;

  // The names of the reports of which a row is due.
  std::set<std::string> Due() const;

  // What the items of a report are told apart by, null for one without; and whether it is sent for
  // the first time, so that the numbers count.
  const json_t* HoldsOf(std::string_view report) const;
  bool IsFirst(std::string_view report) const;

 private:
  std::vector<const json_t*> Rows(const char* member) const;
  const json_t* RowOf(std::string_view report) const;  // the first one; null when there is none
  const json_t* LastTimeOf(const json_t* row) const;   // null when it was never reported

  JsonOwner list;
  std::filesystem::path before;
  JsonOwner settings;
  int64_t now;
};

}  // namespace ostrell
