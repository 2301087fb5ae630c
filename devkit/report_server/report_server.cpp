#include "devkit/report_server/report_server.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "devkit/report_server/answers.h"
#include "devkit/report_server/whole_number.h"

namespace ostrell {
namespace {

// In place of a fault's name: none, whatever is switched on.
constexpr std::string_view kNoFault = "none";

HttpAnswer PlainAnswer(int status, std::string_view text) {
  return {.status = status, .body = std::string(text) + "\n", .type = "text/plain"};
}

// What the target names when its fault is taken away.
std::string SameWithoutFault(const RequestTarget& target) {
  return target.faultName.empty() ? "/fault/none" + target.pathAndQuery : target.pathAndQuery;
}

// The ticket that "/put/17" names; nothing for any other path.
std::optional<uint64_t> TicketOfPath(std::string_view path) {
  constexpr std::string_view kPut = "/put/";
  return path.starts_with(kPut) ? WholeNumber<uint64_t>(path.substr(kPut.size())) : std::nullopt;
}

bool IsJsonReport(std::string_view report) {
  return report != "rc3" && report != "rc4";
}

}  // namespace

ReportServer::ReportServer(ReportServerOptions startOptions)
    : options(std::move(startOptions)),
      log(options.kept),
      listener([this](const HttpRequest& request) { return Handle(request); },
               options.maxBodyBytes) {
  for (const Fault fault : options.faults) {
    switches.Set(fault);
  }
}

bool ReportServer::Start(std::string* why) {
  if (!log.Open(options.store, why)) {
    return false;
  }
  // Each ticket takes a request, so the tickets of an earlier run have lower numbers.
  tickets.emplace(log.NextNumber());
  return listener.Start(options.port, why);
}

void ReportServer::Stop() {
  log.StopWaiting();
  listener.Stop();
}

int ReportServer::Port() const {
  return listener.Port();
}

std::string ReportServer::Url() const {
  return "https://127.0.0.1:" + std::to_string(Port());
}

void ReportServer::SetInstructions(std::string document) {
  const std::scoped_lock lock(changing);
  options.instructions = std::move(document);
}

// Who removes a file has taken it: it is listed once.
void ReportServer::TakeWrittenFiles() {
  for (const std::filesystem::path& file : files.Files()) {
    std::ifstream written(file, std::ios::binary);
    const std::string body((std::istreambuf_iterator<char>(written)), {});
    if (std::filesystem::remove(file)) {
      Handle({.method = "PUT",
              .target = "/put/" + file.filename().string(),
              .headers = {},
              .body = body});
    }
  }
}

std::string ReportServer::Changes(uint64_t after, std::chrono::milliseconds patience) {
  TakeWrittenFiles();
  return log.Changes(after, patience);
}

std::vector<JsonOwner> ReportServer::Requests() const {
  std::vector<JsonOwner> requests;
  for (const KeptRequestPtr& request : log.All()) {
    const std::string& line = request->line;
    requests.emplace_back(json_loadb(line.data(), line.size(), JSON_ALLOW_NUL, nullptr));
  }
  return requests;
}

std::string ReportServer::Instructions() const {
  const std::scoped_lock lock(changing);
  return options.instructions;
}

HttpAnswer ReportServer::Handle(const HttpRequest& request) {
  const RequestTarget target = ParseRequestTarget(request.target);
  RequestRecord record{.request = request, .query = target.query};
  ActiveFaults faults([&](Fault fault) {
    return target.faultName.empty() ? switches.Acts(fault, record.report)
                                    : target.faultName == NameOf(fault);
  });
  HttpAnswer answer;
  if (request.refusedStatus != 0) {
    answer = PlainAnswer(request.refusedStatus, "refused");
  } else if (!target.faultName.empty() && target.faultName != kNoFault &&
             !FaultNamed(target.faultName)) {
    answer = PlainAnswer(404, "no such fault");
  } else {
    answer = request.method == "GET" ? AnswerGet(target, faults, record)
                                     : AnswerPut(target, faults, record);
  }
  record.status = answer.status;
  record.fault = faults.Acted();
  if (!log.Add(record)) {
    std::fprintf(stderr, "report_server: a request cannot be written to %s\n",
                 options.store.c_str());
    return PlainAnswer(500, "the request cannot be kept");
  }
  return answer;
}

HttpAnswer ReportServer::AnswerGet(const RequestTarget& target, ActiveFaults& faults,
                                   RequestRecord& record) {
  record.report = ReportOfPath(target.path);
  HttpAnswer answer;
  if (record.report == "rc1") {
    answer = RecordAnswer(Instructions(), faults);
  } else if (!record.report.empty() && target.Value("o")) {
    answer = AnswerTicket(target, faults, record);
  } else if (record.report == "rc3" && target.Value("h")) {
    const std::string digest(*target.Value("h"));
    answer = QuestionAnswer(options.known.contains(digest), faults);
  } else {
    return record.report.empty() ? PlainAnswer(404, "no such path")
                                 : PlainAnswer(400, "no digest of a body");
  }
  return WithFaultsOfGet(std::move(answer), SameWithoutFault(target), faults);
}

HttpAnswer ReportServer::AnswerTicket(const RequestTarget& target, ActiveFaults& faults,
                                      RequestRecord& record) {
  record.ticket = tickets->Issue(
      {.report = record.report, .query = target.query, .digest = std::string(*target.Value("o"))});
  const std::string origin = Url();
  const std::string prefix = target.FaultPrefix();
  return TicketAnswer(
      {.origin = origin, .prefix = prefix, .number = *record.ticket, .files = files.Path()},
      faults);
}

HttpAnswer ReportServer::AnswerPut(const RequestTarget& target, ActiveFaults& faults,
                                   RequestRecord& record) {
  const auto number = TicketOfPath(target.path);
  const auto ticket = number ? tickets->Find(*number) : std::nullopt;
  if (!ticket) {
    return PlainAnswer(404, "no such ticket");
  }
  record.report = ticket->report;
  record.query = ticket->query;
  record.ticket = number;
  record.body = CheckPackedBody(record.request.body,
                                {.digest = ticket->digest, .isJson = IsJsonReport(ticket->report)});
  return PutAnswer(SameWithoutFault(target), faults);
}

}  // namespace ostrell
