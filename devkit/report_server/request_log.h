#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "devkit/report_server/http_exchange.h"
#include "devkit/report_server/packed_body.h"
#include "devkit/report_server/request_target.h"

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

// The requests in the order of their answers, numbered from 1: in memory as lines of JSON and,
// where a folder is given, on disk as
//
//   NNNN.request    request line, headers and body
//   NNNN.body       the unpacked body of a PUT
//   requests.jsonl  the lines
//
// docs/report-protocol.md describes them. The unpacked bodies of the newest PUTs stay in memory,
// too, kKeptBodyBytes at most. All operations may be called from any thread.
class RequestLog {
 public:
  // Makes `folder` where it is missing; an empty one keeps nothing on disk. In a folder that holds
  // requests the numbers go on after the last. False, with one line of text in `why`, when the
  // folder cannot be made or written.
  bool Open(const std::filesystem::path& folder, std::string* why);

  // The number that the next request gets.
  uint64_t NextNumber() const;

  // Returns false when the request could not be written to disk; it is then kept in memory only.
  bool Add(const RequestRecord& record);

  // Of the requests behind number `after`.
  std::vector<std::string> Lines(uint64_t after = 0) const;

  // The unpacked body of the PUT of that number; nothing when it is none or no longer kept.
  std::optional<std::string> Body(uint64_t number) const;

  static constexpr size_t kKeptBodyBytes = size_t{64} << 20;

 private:
  bool Write(const RequestRecord& record, const std::string& line) const;
  void KeepBody(const std::string& unpacked);

  mutable std::mutex mutex;
  std::filesystem::path store;
  uint64_t next = 1;
  std::vector<std::string> lines;
  std::map<uint64_t, std::string> bodies;
  size_t bodyBytes = 0;
};

}  // namespace ostrell
