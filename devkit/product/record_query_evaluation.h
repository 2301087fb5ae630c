#pragma once

#include "base/json.h"

namespace ostrell {

// Runs a query over an array of record objects and gives a new array with copies of the records
// that meet all conditions, which the caller may change. The descriptor:
//
//   {"c": [condition...], "o": [{"n": column, "t": "ASC" or "DESC"}]}
//   condition = {"c": "><", "n": column, "v": {"l": lowest, "r": highest}}     both included
//             | {"c": "in", "n": column, "v": [number...]}
//             | {"c": "<", "=" or ">", "n": column, "v": number}
//
// Numbers are integers. A record without an integer in a condition's column does not meet it, and
// one without an integer in the order's column comes last; equal records keep their order. Empty
// for null and for every other descriptor: unknown operators, missing or further members, other
// types.
JsonOwner EvaluateRecordQuery(json_t* records, json_t* descriptor);

}  // namespace ostrell
