#include "devkit/report_server/sample_summary.h"

#include <fmt/core.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <tuple>

#include "devkit/report_server/request_summary.h"
#include "devkit/report_server/sample_requests.h"

namespace ostrell {
namespace {

constexpr auto kNone = "-";

struct Row {
  std::string foundBy;
  std::string file;
  std::string asked = kNone;
  std::string known = kNone;
  std::string sent = kNone;  // bytes
};

// What is to become of a file after `taken` others of its pass were sent.
struct Outcome {
  Row row;
  std::string why;
};

Outcome OutcomeOf(const json_t* file, int64_t taken) {
  Outcome outcome{{.foundBy = TextOf(file, "found_by"), .file = TextOf(file, "file")},
                  TextOf(file, "why")};
  const auto after = Integer64Member(file, "after");
  if (after && taken >= *after) {
    return outcome;
  }
  outcome.row.asked = TextMember(file, "asked").value_or(kNone);
  outcome.row.known = TextMember(file, "known").value_or(kNone);
  outcome.row.sent = NumberOf(file, "sent");
  if (after) {
    outcome.why.clear();
  }
  return outcome;
}

bool Contains(const json_t* array, const json_t* wanted) {
  size_t index = 0;
  const json_t* element = nullptr;
  json_array_foreach(array, index, element) {
    if (json_equal(element, wanted) != 0) {
      return true;
    }
  }
  return false;
}

// Empty when what happened is what was expected.
std::string Judgement(const Row& row, const Outcome& expected) {
  const auto& [asked, known, sent] = std::tie(row.asked, row.known, row.sent);
  const Row& wanted = expected.row;
  if (asked == wanted.asked && known == wanted.known && sent == wanted.sent) {
    return "";
  }
  if (wanted.asked == kNone) {
    return "WRONG: asked all the same: " + expected.why;
  }
  return asked == kNone ? "MISSING: not asked"
         : sent == kNone && wanted.sent != kNone
             ? "MISSING: not sent"
             : fmt::format("WRONG: known {}, sent {} expected", wanted.known, wanted.sent);
}

class SampleTable {
 public:
  SampleTable(const ExpectedRun& expectedRun, const std::vector<JsonOwner>& lines, json_t* rows)
      : expected(expectedRun),
        notSent(rows),
        requests(lines),
        isAnswered(std::any_of(lines.begin(), lines.end(), [](const JsonOwner& line) {
          return TextOf(line.Get(), "report") == "rc1" && HasArrived(line.Get()) &&
                 TextOf(line.Get(), "fault").empty();
        })) {}

  // The files of a row of the reports, or why there are none.
  void PrintPass(const json_t* pass) {
    const json_t* const kinds = json_object_get(pass, "found_by");
    const std::string first = json_string_value(json_array_get(kinds, 0));
    const int64_t start = expected.StartOf(pass);
    if (!expected.WhyNotDue(pass).empty()) {
      Print({first, "not due"});
    } else if (const auto text = TextMember(pass, "if_no_answer"); text && !isAnswered) {
      Print({first, std::string(*text)});
    } else if (const auto none = TextMember(pass, "if_none"); none && !HasAny(first, start)) {
      Print({first, std::string(*none)});
    } else {
      PrintFiles(kinds, start, TextOf(pass, "if_older"));
    }
  }

  // Requests that no file has explained.
  void PrintRest() {
    for (const json_t* line : requests.Questions()) {
      PrintWrong({"?", QueryValueOf(line, "p")}, "WRONG: asked, and nothing names it");
    }
    for (const json_t* line : requests.Uploads()) {
      PrintWrong({"?", QueryValueOf(line, "h")}, "WRONG: uploaded damaged, or without a question");
    }
  }

  bool IsSound() const { return isSound; }

 private:
  void Print(const Row& row, std::string_view remark = "") {
    fmt::print("           {:<14} {:<10} {:<10} {:>7}  {}{}{}\n", row.foundBy, row.asked, row.known,
               row.sent, row.file, remark.empty() ? "" : ": ", remark);
    if (row.sent == kNone) {
      const std::string why(row.known == "yes" ? "the server knows the sample" : remark);
      const std::string what = row.file.empty() ? row.foundBy : row.file;
      json_array_append_new(notSent, json_pack("{s:s, s:s, s:s}", "report", "rc3", "what",
                                               what.c_str(), "why", why.c_str()));
    }
  }

  static bool IsSince(const json_t* file, int64_t start) {
    return Integer64Member(file, "time").value_or(0) >= start;
  }

  bool HasAny(std::string_view foundBy, int64_t start) const {
    const auto files = expected.Samples();
    return std::any_of(files.begin(), files.end(), [&](const json_t* file) {
      return TextMember(file, "found_by") == foundBy && IsSince(file, start);
    });
  }

  void PrintFiles(const json_t* kinds, int64_t start, const std::string& ifOlder) {
    int64_t taken = 0;
    for (const json_t* file : expected.Samples()) {
      if (!Contains(kinds, json_object_get(file, "found_by"))) {
        continue;
      }
      if (IsSince(file, start)) {
        taken += PrintFile(OutcomeOf(file, taken)) ? 1 : 0;
      } else if (!ifOlder.empty()) {
        PrintFile({{.foundBy = TextOf(file, "found_by"), .file = TextOf(file, "file")}, ifOlder});
      }
    }
  }

  // True when the file was sent as far as the agent could see: a cut answer tells it that the
  // upload has failed.
  bool PrintFile(const Outcome& wanted) {
    Row row{.foundBy = wanted.row.foundBy, .file = wanted.row.file};
    const bool isHeld = row.foundBy == "quarantine";
    const json_t* upload = nullptr;
    if (const json_t* const question = requests.TakeQuestion(isHeld ? "1" : "2", row.file)) {
      upload = requests.TakeUpload(question);
      const std::string status = NumberOf(question, "status");
      row.asked = isHeld ? "quarantine" : "disk";
      row.known = status == "200" ? "yes" : status == "404" ? "no" : "status " + status;
      row.sent = NumberOf(upload, "unpacked");
    }
    if (const std::string judgement = Judgement(row, wanted); !judgement.empty()) {
      PrintWrong(row, judgement);
    } else {
      Print(row, wanted.why);
    }
    return upload != nullptr && TextOf(upload, "fault") != "put-cut";
  }

  void PrintWrong(const Row& row, const std::string& what) {
    Print(row, what);
    isSound = false;
  }

  const ExpectedRun& expected;
  json_t* const notSent;
  SampleRequests requests;
  bool isAnswered;  // the server has given its instructions
  bool isSound = true;
};

}  // namespace

bool PrintSamples(const ExpectedRun& expected, const std::vector<JsonOwner>& requests,
                  json_t* notSent) {
  fmt::print("\n{:<10} {:<14} {:<10} {:<10} {:>7}  {}\n", "samples", "found by", "asked", "known",
             "sent", "file");
  SampleTable table(expected, requests, notSent);
  for (const json_t* row : expected.Reports()) {
    if (json_object_get(row, "found_by") != nullptr) {
      table.PrintPass(row);
    }
  }
  table.PrintRest();
  return table.IsSound();
}

}  // namespace ostrell
