#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "devkit/report_server/http_exchange.h"
#include "devkit/report_server/packed_body.h"
#include "devkit/report_server/request_target.h"
#include "devkit/report_server/run_list.h"

namespace ostrell {

// What is kept of one request and its answer.
struct RequestRecord {
  const HttpRequest& request;
  std::string report{};  // "rc1" to "rc7", of a PUT that of its ticket; empty when it is none
  QueryValues query{};   // of a PUT that of its ticket
  int status = 0;        // answered
  std::string fault{};   // what acted; empty when nothing did
  std::optional<uint64_t> ticket{};
  std::optional<PackedBodyCheck> body{};  // of a PUT
};

// One request as it is kept in memory.
struct KeptRequest {
  uint64_t number;
  uint64_t run;
  uint64_t change;     // the one that it is
  int64_t time;        // of its arrival, seconds since 1970
  std::string report;  // as in RequestRecord
  bool isPut;          // to a ticket: what was received is a packed body
  std::string line;    // as in requests.jsonl
  std::string received;

  size_t Bytes() const { return sizeof(*this) + line.size() + received.size(); }
};
using KeptRequestPtr = std::shared_ptr<const KeptRequest>;

// How much of what came in stays in memory: the newest.
struct LogLimits {
  size_t runs = 500;
  size_t bytes = size_t{1} << 30;
};

// The requests in the order of their answers, numbered from 1: the newest runs in memory, and where
// a folder is given, all on disk as
//
//   NNNN.request    request line, headers and body
//   NNNN.body       the unpacked body of a PUT
//   requests.jsonl  a line of JSON for each
//
// docs/report-protocol.md describes them. All operations may be called from any thread.
class RequestLog {
 public:
  explicit RequestLog(const LogLimits& kept) : limits(kept) {}

  // Makes `folder` where it is missing; an empty one keeps nothing on disk. In a folder that holds
  // requests the numbers go on after the last. False, with one line of text in `why`, when the
  // folder cannot be made or written.
  bool Open(const std::filesystem::path& folder, std::string* why);

  // The number that the next request gets.
  uint64_t NextNumber() const;

  // Returns false when the request could not be written to disk; it is then kept in memory only.
  bool Add(const RequestRecord& record);

  // The request of that number; null when it is not, or no longer, in memory.
  KeptRequestPtr Find(uint64_t number) const;

  // All that are in memory, oldest first.
  std::vector<KeptRequestPtr> All() const;

  // Nothing when none is in memory.
  std::optional<uint64_t> NewestRun() const;

  // What was not sent in a run, for Changes. False for a run that is not in memory.
  bool SetNotSent(uint64_t run, JsonOwner rows);

  // Forgets what is in memory; what is on disk stays.
  void Clear();

  // What has changed since the answer that gave the cursor `after`, 0 for none, as a JSON object:
  //
  //   "cursor"    for the next call; it covers kMaxChanges requests at most, "more" says whether
  //               there are others
  //   "oldest"    the lowest number in memory; what is below has been forgotten
  //   "requests"  their lines, each with its "run" and "time" of arrival (seconds since 1970)
  //   "runs"      those of these requests, and those whose "not_sent" has changed
  //
  // Returns when there is something, and without it after `patience`.
  std::string Changes(uint64_t after, std::chrono::milliseconds patience) const;

  // Ends the waiting of Changes, now and from now on.
  void StopWaiting();

  static constexpr size_t kMaxChanges = 1000;

 private:
  bool Write(const RequestRecord& record, const std::string& line) const;
  void Keep(const RequestRecord& record, std::string line);
  void ForgetOldest();

  const LogLimits limits;
  mutable std::mutex mutex;
  mutable std::condition_variable changed;
  bool isStopped = false;
  std::filesystem::path store;
  uint64_t next = 1;
  RunList runs;
  std::deque<KeptRequestPtr> kept;
  size_t keptBytes = 0;
  uint64_t cursor = 0;                      // counts the changes
  std::map<uint64_t, uint64_t> runChanges;  // of "not_sent", by run
};

}  // namespace ostrell
