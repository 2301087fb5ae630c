#pragma once

#include <cstdint>

#include "base/json.h"

namespace ostrell {

// The third of the sample reports: files that the product holds in quarantine.

// What the server wants of the quarantine: in its answer to rc1, under "samples"."quarantine".
struct QuarantineInstructions {
  int32_t mostFiles;     // "cnt": sent in one run
  const json_t* barred;  // "vnflt": patterns of detection names, borrowed; null for none
};
// Nothing unless "cnt" is there, an integer.
std::optional<QuarantineInstructions> ReadQuarantineInstructions(const json_t* answer);

// An entry of the quarantine's list. The texts live as long as the entry and are terminated.
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

// Sends the held files of the entries since `from` (seconds since 1970) that are wanted and that
// the server does not know, at most as many as it asked for. Returns 1 to have the time recorded,
// also when no file was sent; 0 when the quarantine does not open or gives no list, or the server
// has given no instructions. Windows only.
int32_t QuarantineJob(int64_t from, const json_t* instructions);

}  // namespace ostrell
