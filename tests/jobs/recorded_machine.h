#pragma once

#include <memory>
#include <string>

#include "tests/jobs/job_run.h"

namespace ostrell {

// What comes of a job on a machine that JSON describes: `machine`, and `change` which replaces its
// members, each in its place; null takes one away. All but "run" may be missing:
//
//   run            the operation: a report, RunReports, or a function by its name
//   again          true: a second time, without the server's fault
//   path, from     what it works on: a path, a time
//   instructions   the server's answer to rc1
//   fault          what the report server commits at every request
//   link           true: only "ReportLink" leads to that server
//   store          false: there is none
//   last           times of last reports by key
//   now            the run's time, when it is not FakeRun's; clock: that of the clock behind it;
//                  zone: false when it makes no time local
//   documents      of the policy database by number; the detection records are 0
//   quarantine     its list; held: content of its files by id; restore: what a restoration returns
//   svclink        what is not as it should be, by FakeSvclink's names
//   signatures     versions of signature files by path
//   program        the program's path; null: cannot be told
//   files          by path; relative ones lie beside the program. A file is its content or an
//                  object of content, written (seconds), size and bad (bytes), and the marks
//                  folder, writing, held, pipe
//   registry       values by root (HKLM, HKCU), key and name, "HKLM\\key\\name"
//   system, kernel false: cannot be told; machine: number; modern: false without the event service
//   popups         rows [time, detail] of the pop-up block database; without rows it is missing,
//                  and so is its folder when this is no list
//   events         channels of objects with provider, id, data, time, level
//   classic        logs of records [provider, id, time, text]
//   show           beside what is always shown: "log", "last message", "queries", "files",
//                  "opened", "pop-up database"
//
// Content is text, {"hex": "..."}, {"text": content, "times": count}, {"local": seconds, "form":
// "..."} for a local time in strftime's form, as log lines have it where none is given, or a list
// of these.
//
// The outcome, a line each: "result ..." of an operation that has one; what the server received
// (JobRun::Received); "recorded KEY TIME"; "restored ID"; and what is to be shown. Throws for JSON
// that is none, and for an operation or a thing to show that does not exist.
std::string OutcomeOf(const std::string& machine, const std::string& change);

// The machine itself, on which nothing has run. Throws for JSON that is none.
std::shared_ptr<JobRun> MachineOf(const std::string& machine, const std::string& change);

}  // namespace ostrell
