#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "base/json.h"
#include "devkit/report_server/request_target.h"

namespace ostrell {

// The runs of the agent that the requests belong to, numbered from 1. A run of a client ("regid"
// with or without its braces) begins with its rc1, or with its first request that is seen; what
// names no client belongs to the newest run.
class RunList {
 public:
  // The run of a request that comes in now, a new one where it begins one. `now` is in seconds
  // since 1970.
  uint64_t RunOf(const std::string& report, const QueryValues& query, int64_t now);

  // What became known of the run otherwise: which reports were not sent, and why. False for a run
  // that is not listed.
  bool SetNotSent(uint64_t run, JsonOwner rows);

  // {"run", "client", "began", "not_sent"}; null for one that is not listed.
  JsonOwner Describe(uint64_t run) const;

  size_t Size() const { return runs.size(); }
  void Forget(uint64_t run) { runs.erase(run); }

 private:
  struct Run {
    std::string client;
    int64_t began;
    JsonOwner notSent;
  };

  uint64_t next = 1;
  std::map<uint64_t, Run> runs;
  std::map<std::string, uint64_t> newestOf;  // by client
};

}  // namespace ostrell
