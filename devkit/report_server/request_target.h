#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ostrell {

// Decoded names and values in the order of the query.
using QueryValues = std::vector<std::pair<std::string, std::string>>;

// Path and query of a request, taken apart.
struct RequestTarget {
  std::string faultName;     // of a "/fault/NAME" that precedes the path; else empty
  std::string pathAndQuery;  // as received, without that prefix
  std::string path;          // not decoded
  QueryValues query;

  // "/fault/NAME", or empty.
  std::string FaultPrefix() const { return faultName.empty() ? "" : "/fault/" + faultName; }

  // The first value of that name; nothing when the query does not have it.
  std::optional<std::string_view> Value(std::string_view name) const;
};

// Every text has a result: what is not understood stays in the path.
RequestTarget ParseRequestTarget(std::string_view target);

// Takes "a=1&b=x%20y" apart as a PHP server does: the name ends at the first "=", "+" is a space, a
// "%" that two hexadecimal digits do not follow stands for itself, parts without a name are
// dropped.
QueryValues DecodeQuery(std::string_view query);

// "rc1" to "rc5" and "rc7" for "/v8/rcN.php"; empty for any other path.
std::string ReportOfPath(std::string_view path);

}  // namespace ostrell
