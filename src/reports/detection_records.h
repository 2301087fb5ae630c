#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/json.h"

namespace ostrell {

// Records of the product's detection log: objects with an integer kind under "fid", the time under
// "ts", a row number under "id" and an object under "detail" whose members depend on the kind. They
// come from a library and may be anything: a member of another type counts as json_unpack counts
// it, an integer of more than 32 bits by its low ones. Text may have any length and is not copied.

// The report's body: the records in order as compact text (json_array_text.h), without malformed
// ones and those that are one event with an earlier one, the rest flattened, for which they are
// changed in place. Nothing when none is left or the text cannot be made.
std::optional<std::string> KeepDetectionRecords(const JsonOwner& records);

// Brings a record into the form that the fingerprint is taken of: deletes "id", and by kind derives
// "domain", takes over what the master process says, or deletes what is private in a mail. False
// when the record is dropped: no "fid" or "detail", or a member missing that its kind has to have.
bool NormalizeRecord(json_t* record);

// Rewrites a normalised record as an object of one level and returns it: the members of "detail"
// replace its own of the same name, "submit_record" marks what the user submitted, "treatment"
// keeps its low 16 bits, "ts" becomes "ts_occur", and each path is joined by its base name.
json_t* FlattenRecord(json_t* record);

}  // namespace ostrell
