#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

#include "base/json.h"
#include "base/limited_set.h"
#include "env/report_clock.h"

namespace ostrell {

// A pass over records of the product's log that hands on the files which they name, each file once.

// The same for paths that differ only in the case of ASCII letters: MurmurHash64B of the path in
// lower case, with a seed of its own.
uint64_t PathKey(std::string_view path);

// The files that a run has handled. One past the limit is handled again, one for which there is no
// memory is left out: none is to be sent twice.
using PathKeys = LimitedSet<uint64_t>;
inline constexpr size_t kMaxPathKeys = 0xfffffff;

// Which file a record names, UTF-8; nothing when the record is skipped. The text lives as long as
// the record.
using PathOfRecord = std::optional<std::string_view>(const json_t* record);

// What the user submitted: the path of the record, or else that of its master process.
PathOfRecord SubmittedSamplePath;
// The program of a network record, unless that is the system itself.
PathOfRecord NetworkProgramPath;
// A file that may have been taken for a virus: "recname" begins with "Virus/", in any letter case,
// and "solid" and "result" are 0.
PathOfRecord FalsePositivePath;

// Seconds that a pass over samples may take; the last one is begun in time and not cut short.
inline constexpr int64_t kSampleTimeBudget = 900;

// The time of one pass, from the construction of this object on.
class SampleTimeBudget {
 public:
  explicit SampleTimeBudget(const Clock& source);

  // True once more than kSampleTimeBudget has passed: then the pass begins with no further sample.
  bool IsSpent() const;

 private:
  const Clock& clock;
  int64_t began;
};

// Calls `submit` for the file of each record whose key is new to `handled`. Ends before the next
// record once the time is spent.
void RunSamplePass(const JsonOwner& records, PathOfRecord* pathOf, PathKeys& handled,
                   const std::function<void(std::string_view path)>& submit, const Clock& clock);

}  // namespace ostrell
