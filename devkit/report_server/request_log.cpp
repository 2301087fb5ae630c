#include "devkit/report_server/request_log.h"

#include <algorithm>
#include <ctime>
#include <fstream>
#include <set>
#include <string_view>
#include <system_error>

#include "base/print.h"
#include "devkit/report_server/json_text.h"
#include "devkit/report_server/whole_number.h"

namespace ostrell {
namespace {

constexpr auto kLinesFile = "requests.jsonl";

void Set(json_t* object, const char* name, std::string_view text) {
  json_object_set_new(object, name, JsonString(text).Release());
}

void Set(json_t* object, const char* name, size_t number) {
  json_object_set_new(object, name, json_integer(static_cast<json_int_t>(number)));
}

// An object of the pairs; `separator` stands between the values of a name that occurs repeatedly.
void Set(json_t* object, const char* name, const QueryValues& pairs, std::string_view separator) {
  JsonOwner values(json_object());
  for (const auto& [pairName, value] : pairs) {
    const JsonOwner key = JsonString(pairName);
    const json_t* const earlier = json_object_get(values.Get(), json_string_value(key.Get()));
    std::string joined;
    if (earlier != nullptr) {
      joined.append(json_string_value(earlier)).append(separator);
    }
    Set(values.Get(), json_string_value(key.Get()), joined + value);
  }
  json_object_set_new(object, name, values.Release());
}

void SetBody(json_t* line, const RequestRecord& record) {
  const PackedBodyCheck& body = *record.body;
  Set(line, "packed", record.request.body.size());
  Set(line, "unpacked", body.unpacked.size());
  Set(line, "digest", body.digestMatches ? "ok" : "mismatch");
  Set(line, "zlib", body.isZlib ? "ok" : "damaged");
  Set(line, "json", !body.isJson ? "none" : *body.isJson ? "ok" : "damaged");
  if (body.items) {
    Set(line, "items", *body.items);
  }
}

std::string LineOf(uint64_t number, const RequestRecord& record) {
  const JsonOwner line(json_object());
  Set(line.Get(), "number", number);
  Set(line.Get(), "method", record.request.method);
  Set(line.Get(), "target", record.request.target);
  if (!record.report.empty()) {
    Set(line.Get(), "report", record.report);
  }
  Set(line.Get(), "query", record.query, "\n");
  Set(line.Get(), "headers", record.request.headers, ", ");
  Set(line.Get(), "status", static_cast<size_t>(record.status));
  if (!record.fault.empty()) {
    Set(line.Get(), "fault", record.fault);
  }
  Set(line.Get(), "bytes", record.request.body.size());
  if (record.ticket) {
    Set(line.Get(), "ticket", *record.ticket);
  }
  if (record.body) {
    SetBody(line.Get(), record);
  }
  return CompactText(line);
}

std::string RequestText(const HttpRequest& request) {
  std::string text = Print("%s %s HTTP/1.1\r\n", request.method, request.target);
  for (const auto& [name, value] : request.headers) {
    text += Print("%s: %s\r\n", name, value);
  }
  return text + "\r\n" + request.body;
}

bool WriteFile(const std::filesystem::path& path, std::string_view bytes,
               std::ios::openmode mode = std::ios::trunc) {
  std::ofstream file(path, std::ios::binary | std::ios::out | mode);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  return file.good();
}

// The number of a file "NNNN.request"; 0 for any other.
uint64_t NumberOf(const std::filesystem::path& file) {
  const std::string stem = file.stem();
  return file.extension() == ".request" ? WholeNumber<uint64_t>(stem).value_or(0) : 0;
}

}  // namespace

bool RequestLog::Open(const std::filesystem::path& folder, std::string* why) {
  const std::scoped_lock lock(mutex);
  if (folder.empty()) {
    return true;
  }
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  for (std::filesystem::directory_iterator file(folder, error), end; !error && file != end;
       file.increment(error)) {
    next = std::max(next, NumberOf(file->path()) + 1);
  }
  if (error || !WriteFile(folder / kLinesFile, "", std::ios::app)) {
    *why = "cannot keep requests in " + folder.string() +
           (error ? ": " + error.message() : std::string());
    return false;
  }
  store = folder;
  return true;
}

uint64_t RequestLog::NextNumber() const {
  const std::scoped_lock lock(mutex);
  return next;
}

bool RequestLog::Add(const RequestRecord& record) {
  bool isOnDisk = true;
  {
    const std::scoped_lock lock(mutex);
    std::string line = LineOf(next, record);
    isOnDisk = store.empty() || Write(record, line);
    Keep(record, std::move(line));
    ++next;
  }
  changed.notify_all();
  return isOnDisk;
}

void RequestLog::Keep(const RequestRecord& record, std::string line) {
  const int64_t now = std::time(nullptr);
  const uint64_t run = runs.RunOf(record.report, record.query, now);
  kept.push_back(std::make_shared<KeptRequest>(KeptRequest{.number = next,
                                                           .run = run,
                                                           .change = ++cursor,
                                                           .time = now,
                                                           .report = record.report,
                                                           .isPut = record.body.has_value(),
                                                           .line = std::move(line),
                                                           .received = record.request.body}));
  keptBytes += kept.back()->Bytes();
  while (kept.size() > 1 && (runs.Size() > limits.runs || keptBytes > limits.bytes)) {
    ForgetOldest();
  }
}

// Runs of several clients may overlap: a run goes with the last of its requests.
void RequestLog::ForgetOldest() {
  const uint64_t run = kept.front()->run;
  keptBytes -= kept.front()->Bytes();
  kept.pop_front();
  if (std::ranges::find(kept, run, &KeptRequest::run) == kept.end()) {
    runs.Forget(run);
    runChanges.erase(run);
  }
}

// The line comes last: who reads it finds the files.
bool RequestLog::Write(const RequestRecord& record, const std::string& line) const {
  const std::string name = Print("%04u", next);
  return WriteFile(store / (name + ".request"), RequestText(record.request)) &&
         (!record.body || WriteFile(store / (name + ".body"), record.body->unpacked)) &&
         WriteFile(store / kLinesFile, line + "\n", std::ios::app);
}

KeptRequestPtr RequestLog::Find(uint64_t number) const {
  const std::scoped_lock lock(mutex);
  const auto found = std::ranges::lower_bound(kept, number, {}, &KeptRequest::number);
  return found != kept.end() && (*found)->number == number ? *found : nullptr;
}

std::vector<KeptRequestPtr> RequestLog::All() const {
  const std::scoped_lock lock(mutex);
  return {kept.begin(), kept.end()};
}

std::optional<uint64_t> RequestLog::NewestRun() const {
  const std::scoped_lock lock(mutex);
  return kept.empty() ? std::nullopt : std::optional(kept.back()->run);
}

bool RequestLog::SetNotSent(uint64_t run, JsonOwner rows) {
  const std::scoped_lock lock(mutex);
  if (!runs.SetNotSent(run, std::move(rows))) {
    return false;
  }
  runChanges[run] = ++cursor;
  changed.notify_all();
  return true;
}

void RequestLog::Clear() {
  const std::scoped_lock lock(mutex);
  while (!kept.empty()) {
    ForgetOldest();
  }
  ++cursor;
  changed.notify_all();
}

std::string RequestLog::Changes(uint64_t after, std::chrono::milliseconds patience) const {
  std::unique_lock lock(mutex);
  after = after > cursor ? 0 : after;  // of a server that has ended
  changed.wait_for(lock, patience, [&] { return cursor > after || isStopped; });
  auto request = std::ranges::upper_bound(kept, after, {}, &KeptRequest::change);
  const bool isMore = kept.end() - request > static_cast<ptrdiff_t>(kMaxChanges);
  const auto end = isMore ? request + kMaxChanges : kept.end();
  const uint64_t reached = isMore ? (*(end - 1))->change : cursor;
  std::set<uint64_t> concerned;
  for (const auto& [run, change] : runChanges) {
    if (change > after && change <= reached) {
      concerned.insert(run);
    }
  }
  std::string requests;
  for (; request != end; ++request) {
    concerned.insert((*request)->run);
    requests += Print("%s{\"run\":%u,\"time\":%d,%s", requests.empty() ? "" : ",\n",
                      (*request)->run, (*request)->time, (*request)->line.substr(1));
  }
  std::string described;
  for (const uint64_t run : concerned) {
    described += (described.empty() ? "" : ",\n") + CompactText(runs.Describe(run));
  }
  return Print(R"({"cursor":%u,"more":%s,"oldest":%u,"requests":[%s],"runs":[%s]})", reached,
               isMore ? "true" : "false", kept.empty() ? next : kept.front()->number, requests,
               described);
}

void RequestLog::StopWaiting() {
  const std::scoped_lock lock(mutex);
  isStopped = true;
  changed.notify_all();
}

}  // namespace ostrell
