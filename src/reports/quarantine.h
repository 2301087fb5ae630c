#pragma once

#include <cstdint>
#include <functional>

#include "base/json.h"
#include "env/run.h"
#include "reports/sample_pass.h"

namespace ostrell {

// The third of the sample reports: files that the product holds in quarantine.

// What the server wants of the quarantine: in its answer to rc1, under "samples"."quarantine".
struct QuarantineInstructions {
  int32_t maxFiles;      // "cnt": sent in one run
  const json_t* barred;  // "vnflt": patterns of detection names, borrowed; null for none
};
// Nothing unless "cnt" is there, an integer.
std::optional<QuarantineInstructions> ReadQuarantineInstructions(const json_t* answer);

// An entry of the quarantine's list. The texts live as long as the entry.
struct QuarantineEntry {
  int64_t id;
  uint32_t kind;  // of "fid", without the mark of what the user submitted
  std::string_view sha1;
  std::string_view path;  // "fn"
  std::string_view name;  // "vn", of the detection
  int64_t time;           // "ts", seconds since 1970
};
// Nothing when a member is missing or of another type.
std::optional<QuarantineEntry> ReadQuarantineEntry(const json_t* entry);

// Of a kind that is a file, and not barred by name.
bool IsWanted(const QuarantineEntry& entry, const QuarantineInstructions& instructions);

// True when a text of the array, not an empty one, matches as MatchesWildcard has it (wildcard.h).
// What is no array holds no pattern.
bool MatchesAnyPattern(std::string_view text, const json_t* patterns);

// Sends the file that an entry names; false when it was not sent, whatever the reason.
using SendHeldFile = std::function<bool(const QuarantineEntry& entry)>;

// Calls `send` for the entries since `from` (seconds since 1970) that are wanted, until as many
// were sent as the server asked for. Returns 1 to have the time recorded, also when no file was
// sent; 0 when the time of a pass was spent before (SampleTimeBudget): the next run goes over the
// same entries, and what was sent the server knows by then.
int32_t RunQuarantinePass(const JsonOwner& entries, int64_t from,
                          const QuarantineInstructions& instructions, const SendHeldFile& send,
                          const Clock& clock);

// Runs the pass over the product's quarantine, sending the held files that the server does not
// know. 0 also when the quarantine does not open or gives no list, or the server has given no
// instructions.
int32_t QuarantineJob(const Run& run, int64_t from, const json_t* instructions);

}  // namespace ostrell
