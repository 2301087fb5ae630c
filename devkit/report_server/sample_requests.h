#pragma once

#include <string_view>
#include <vector>

#include "base/json.h"

namespace ostrell {

// The sample questions and uploads of a run, each to be taken once, in their order. They live as
// long as the run's requests.
class SampleRequests {
 public:
  using Lines = std::vector<const json_t*>;

  explicit SampleRequests(const std::vector<JsonOwner>& requests);

  // Null when the server was not asked about the file with that source type.
  const json_t* TakeQuestion(std::string_view source, std::string_view path);
  // The sound upload of the sample that was asked about; null when there is none.
  const json_t* TakeUpload(const json_t* question);

  // Those that nobody has taken.
  const Lines& Questions() const { return questions; }
  const Lines& Uploads() const { return uploads; }

 private:
  Lines questions;
  Lines uploads;
};

}  // namespace ostrell
