#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/json.h"
#include "devkit/report_server/fault_switches.h"
#include "devkit/report_server/http_exchange.h"
#include "devkit/report_server/https_listener.h"
#include "devkit/report_server/private_folder.h"
#include "devkit/report_server/request_log.h"
#include "devkit/report_server/request_target.h"
#include "devkit/report_server/tickets.h"

namespace ostrell {

struct ReportServerOptions {
  int port = 18443;               // 0 takes a free one
  std::filesystem::path store{};  // empty: requests are kept in memory only
  std::vector<Fault> faults{};    // switched on from the start
  std::string instructions = R"({"samples":{"quarantine":{"cnt":5,"vnflt":[]}}})";
  std::set<std::string> known{};  // SHA-1 digests of known samples, upper-case hexadecimal
  size_t maxBodyBytes = size_t{512} << 20;
  LogLimits kept{};
};

// The report server of the product on loopback: it gives out tickets, takes and checks uploads,
// answers rc1 and the sample question, keeps every request and misbehaves by named fault.
// docs/report-protocol.md describes what it speaks. What a client wrote to the address of
// Fault::kFileUrl becomes the PUT that it stands for when Changes asks. All operations
// but Start and Stop may be called from any thread at any time.
class ReportServer {
 public:
  explicit ReportServer(ReportServerOptions startOptions);

  // False, with one line of text in `why`, when the port is taken or the store cannot be written.
  // A server starts once.
  bool Start(std::string* why);

  // Waits for the requests under way. The records stay. The destructor stops, too.
  void Stop();

  // The port that is listened on; 0 before Start.
  int Port() const;

  // "https://127.0.0.1:PORT".
  std::string Url() const;

  // It holds from the next request on.
  void SetInstructions(std::string document);

  // The faults of requests whose path names none.
  FaultSwitches& Faults() { return switches; }

  // What is in memory of the requests answered or being answered.
  RequestLog& Log() { return log; }
  // As RequestLog::Changes.
  std::string Changes(uint64_t after, std::chrono::milliseconds patience);
  // One object for each line in memory, oldest first.
  std::vector<JsonOwner> Requests() const;

 private:
  HttpAnswer Handle(const HttpRequest& request);
  HttpAnswer AnswerGet(const RequestTarget& target, ActiveFaults& faults, RequestRecord& record);
  HttpAnswer AnswerPut(const RequestTarget& target, ActiveFaults& faults, RequestRecord& record);
  HttpAnswer AnswerTicket(const RequestTarget& target, ActiveFaults& faults, RequestRecord& record);
  void TakeWrittenFiles();
  std::string Instructions() const;

  ReportServerOptions options;
  mutable std::mutex changing;  // guards options.instructions
  FaultSwitches switches;
  RequestLog log;
  PrivateFolder files;             // where Fault::kFileUrl leads
  std::optional<Tickets> tickets;  // from Start on
  HttpsListener listener;          // last: its threads use the others
};

}  // namespace ostrell
