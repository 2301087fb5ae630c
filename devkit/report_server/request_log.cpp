#include "devkit/report_server/request_log.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <string_view>
#include <system_error>

#include "base/print.h"
#include "devkit/report_server/json_text.h"

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
  uint64_t number = 0;
  const auto [end, error] = std::from_chars(stem.data(), stem.data() + stem.size(), number);
  const bool isNumber = error == std::errc() && end == stem.data() + stem.size();
  return isNumber && file.extension() == ".request" ? number : 0;
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
  const std::scoped_lock lock(mutex);
  lines.push_back(LineOf(next, record));
  const bool kept = store.empty() || Write(record, lines.back());
  if (record.body) {
    KeepBody(record.body->unpacked);
  }
  ++next;
  return kept;
}

// The line comes last: who reads it finds the files.
bool RequestLog::Write(const RequestRecord& record, const std::string& line) const {
  const std::string name = Print("%04u", next);
  return WriteFile(store / (name + ".request"), RequestText(record.request)) &&
         (!record.body || WriteFile(store / (name + ".body"), record.body->unpacked)) &&
         WriteFile(store / kLinesFile, line + "\n", std::ios::app);
}

void RequestLog::KeepBody(const std::string& unpacked) {
  bodyBytes += unpacked.size();
  bodies[next] = unpacked;
  while (bodyBytes > kKeptBodyBytes) {
    bodyBytes -= bodies.begin()->second.size();
    bodies.erase(bodies.begin());
  }
}

std::optional<std::string> RequestLog::Body(uint64_t number) const {
  const std::scoped_lock lock(mutex);
  const auto found = bodies.find(number);
  return found != bodies.end() ? std::optional(found->second) : std::nullopt;
}

std::vector<std::string> RequestLog::Lines(uint64_t after) const {
  const std::scoped_lock lock(mutex);
  const uint64_t first = next - lines.size();
  const uint64_t skipped = after < first ? 0 : std::min<uint64_t>(after - first + 1, lines.size());
  return {lines.begin() + static_cast<ptrdiff_t>(skipped), lines.end()};
}

}  // namespace ostrell
