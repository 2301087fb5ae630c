#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/json.h"
#include "env/report_schedule.h"

namespace ostrell {

// Where the machine that was reported on can be looked at, and what held when the run began.
struct MachinePlaces {
  std::filesystem::path drive;         // its drive C:
  std::filesystem::path settings;      // the agent's settings file before the run
  std::filesystem::path instructions;  // what the server answers rc1 with
  int64_t now = 0;                     // seconds since 1970
};

// What the product keeps on that machine.
class ReportedMachine {
 public:
  explicit ReportedMachine(const MachinePlaces& places);

  // The start of a report's window; nothing when it was not due.
  std::optional<int64_t> StartOf(const ReportTime& report) const;

  // The log's records since `from` with such a "fid", newest first.
  std::vector<const json_t*> RecordsSince(int64_t from,
                                          const std::function<bool(int64_t fid)>& isMeant) const;

  const json_t* QuarantineList() const { return quarantine.Get(); }  // null when there is none
  const json_t* Instructions() const { return instructions.Get(); }  // null when there are none

  // Why a file, or the held file of a quarantine entry, is not sent as a sample; empty when it is.
  std::string WhyNoSample(std::string_view windowsPath) const;
  std::string WhyNoHeldSample(int64_t id) const;

 private:
  std::filesystem::path drive;
  int64_t now;
  JsonOwner settings;
  JsonOwner instructions;
  JsonOwner records;
  JsonOwner quarantine;
};

}  // namespace ostrell
