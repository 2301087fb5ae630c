#include "devkit/report_server/sample_requests.h"

#include <algorithm>

#include "devkit/report_server/request_summary.h"

namespace ostrell {
namespace {

template <class Condition>
const json_t* Take(SampleRequests::Lines& lines, Condition isMeant) {
  const auto found = std::find_if(lines.begin(), lines.end(), isMeant);
  if (found == lines.end()) {
    return nullptr;
  }
  const json_t* const line = *found;
  lines.erase(found);
  return line;
}

}  // namespace

SampleRequests::SampleRequests(const std::vector<JsonOwner>& requests) {
  for (const JsonOwner& line : requests) {
    if (TextOf(line.Get(), "report") != "rc3") {
      continue;
    }
    if (TextOf(line.Get(), "method") == "PUT") {
      uploads.push_back(line.Get());
    } else if (QueryValueOf(line.Get(), "o").empty()) {
      questions.push_back(line.Get());
    }
  }
}

const json_t* SampleRequests::TakeQuestion(std::string_view source, std::string_view path) {
  return Take(questions, [&](const json_t* line) {
    return QueryValueOf(line, "t") == source && QueryValueOf(line, "p") == path;
  });
}

const json_t* SampleRequests::TakeUpload(const json_t* question) {
  return Take(uploads, [&](const json_t* line) {
    return HasArrived(line) && QueryValueOf(line, "h") == QueryValueOf(question, "h");
  });
}

}  // namespace ostrell
