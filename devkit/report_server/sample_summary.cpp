#include "devkit/report_server/sample_summary.h"

#include <fmt/core.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "devkit/report_server/request_summary.h"
#include "devkit/report_server/sample_requests.h"
#include "reports/quarantine.h"
#include "reports/sample_pass.h"

namespace ostrell {
namespace {

constexpr auto kQuarantineSource = "1";
constexpr auto kDiskSource = "2";

struct Row {
  std::string_view job;
  std::string_view file;
  std::string asked = "-";
  std::string known = "-";
  std::string sent = "-";  // bytes
};

void Print(const Row& row, std::string_view remark = "") {
  fmt::print("           {:<14} {:<10} {:<10} {:>7}  {}{}{}\n", row.job, row.asked, row.known,
             row.sent, row.file, remark.empty() ? "" : ": ", remark);
}

std::string WhyUnwanted(const QuarantineEntry& entry, const QuarantineInstructions& wishes) {
  if (MatchesAnyPattern(entry.name, wishes.barred)) {
    return fmt::format("the server bars {}", entry.name);
  }
  return IsWanted(entry, wishes) ? "" : fmt::format("kind {}", entry.kind);
}

class SampleTable {
 public:
  SampleTable(const ReportedMachine& reported, const std::vector<JsonOwner>& lines)
      : machine(reported),
        requests(lines),
        hasInstructions(std::any_of(lines.begin(), lines.end(), [](const JsonOwner& line) {
          return TextOf(line.Get(), "report") == "rc1" && HasArrived(line.Get()) &&
                 TextOf(line.Get(), "fault").empty();
        })) {}

  void PrintSubmitted() {
    const auto from = StartOf(kSampleTime, "submitted");
    if (!from) {
      return;
    }
    const auto submitted = machine.RecordsSince(*from, [](int64_t fid) { return fid < 0; });
    if (submitted.empty()) {
      Print({"submitted", "no record"});
      return;
    }
    PathKeys handled(kMaxPathKeys);
    PrintFiles("submitted", submitted, SubmittedSamplePath, handled);
    PrintFiles("network",
               machine.RecordsSince(*from, [](int64_t fid) { return fid == 31 || fid == 47; }),
               NetworkProgramPath, handled);
  }

  void PrintFalsePositives() {
    if (const auto from = StartOf(kFalsePositiveTime, "false positive")) {
      PathKeys handled(kMaxPathKeys);
      const auto isDetection = [](int64_t fid) { return fid == 1 || fid == 3 || fid == 4; };
      PrintFiles("false positive", machine.RecordsSince(*from, isDetection), FalsePositivePath,
                 handled);
    }
  }

  void PrintQuarantine() {
    const auto from = StartOf(kQuarantineTime, "quarantine");
    const auto wishes =
        ReadQuarantineInstructions(hasInstructions ? machine.Instructions() : nullptr);
    if (!from || !wishes) {
      if (from) {
        Print({"quarantine", "no instructions of the server"});
      }
      return;
    }
    int32_t sent = 0;
    size_t index = 0;
    const json_t* element = nullptr;
    json_array_foreach(machine.QuarantineList(), index, element) {
      if (const auto entry = ReadQuarantineEntry(element)) {
        const std::string why = entry->time < *from        ? "too old"
                                : sent >= wishes->maxFiles ? "enough were sent"
                                                           : WhyUnwanted(*entry, *wishes);
        if (PrintFile({"quarantine", entry->path}, kQuarantineSource, why,
                      machine.WhyNoHeldSample(entry->id))) {
          ++sent;
        }
      }
    }
  }

  // Requests that no file has explained.
  void PrintRest() {
    for (const json_t* line : requests.Questions()) {
      PrintWrong({"?", QueryValueOf(line, "p")}, "asked, and nothing names it");
    }
    for (const json_t* line : requests.Uploads()) {
      PrintWrong({"?", QueryValueOf(line, "h")}, "uploaded damaged, or without a question");
    }
  }

  bool IsSound() const { return isSound; }

 private:
  // Nothing, and a row that says so, when the job was not due.
  std::optional<int64_t> StartOf(const ReportTime& time, std::string_view job) const {
    const auto start = machine.StartOf(time);
    if (!start) {
      Print({job, "not due"});
    }
    return start;
  }

  void PrintFiles(std::string_view job, const std::vector<const json_t*>& records,
                  PathOfRecord* pathOf, PathKeys& handled) {
    for (const json_t* record : records) {
      const auto path = pathOf(record);
      if (path && handled.Add(PathKey(*path))) {
        PrintFile({job, *path}, kDiskSource, machine.WhyNoSample(*path), "");
      } else if (path) {
        Print({job, *path}, "handled already");
      }
    }
  }

  // `whyNotAsked` and `whyNotSent` are empty where there is no reason. True when the file was sent
  // as far as the agent could see: a cut answer tells it that the upload has failed.
  bool PrintFile(Row row, std::string_view source, const std::string& whyNotAsked,
                 const std::string& whyNotSent) {
    const json_t* const question = requests.TakeQuestion(source, row.file);
    if (question == nullptr) {
      PrintReason(row, whyNotAsked, "not asked");
      return false;
    }
    row.asked = source == kDiskSource ? "disk" : "quarantine";
    const std::string status = NumberOf(question, "status");
    row.known = status == "200" ? "yes" : status == "404" ? "no" : "status " + status;
    const json_t* const upload = status == "404" ? requests.TakeUpload(question) : nullptr;
    row.sent = upload != nullptr ? NumberOf(upload, "unpacked") : "-";
    if (!whyNotAsked.empty()) {
      PrintWrong(row, "asked all the same: " + whyNotAsked);
    } else if (upload != nullptr || status == "200") {
      Print(row);
    } else {
      PrintReason(row, status == "404" ? whyNotSent : "", "not sent");
    }
    return upload != nullptr && TextOf(upload, "fault") != "put-cut";
  }

  void PrintReason(const Row& row, const std::string& why, std::string_view what) {
    if (why.empty()) {
      PrintWrong(row, std::string(what) + ", and nothing speaks against it");
    } else {
      Print(row, why);
    }
  }

  void PrintWrong(const Row& row, const std::string& what) {
    Print(row, "WRONG: " + what);
    isSound = false;
  }

  const ReportedMachine& machine;
  SampleRequests requests;
  bool hasInstructions;  // the server has answered rc1
  bool isSound = true;
};

}  // namespace

bool PrintSamples(const ReportedMachine& machine, const std::vector<JsonOwner>& requests) {
  fmt::print("\n{:<10} {:<14} {:<10} {:<10} {:>7}  {}\n", "samples", "found by", "asked", "known",
             "sent", "file");
  SampleTable table(machine, requests);
  table.PrintSubmitted();
  table.PrintFalsePositives();
  table.PrintQuarantine();
  table.PrintRest();
  return table.IsSound();
}

}  // namespace ostrell
