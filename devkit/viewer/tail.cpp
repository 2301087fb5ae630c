#include "devkit/viewer/tail.h"

#include <httplib.h>

#include "base/json.h"
#include "base/print.h"

namespace ostrell {
namespace {

std::string TextIn(const json_t* line, const char* name) {
  return std::string(TextMember(line, name).value_or("-"));
}

std::string NumberIn(const json_t* line, const char* name) {
  const auto number = Integer64Member(line, name);
  return number ? std::to_string(*number) : "-";
}

// "number run report method status", of an upload its sizes and what was found of it.
std::string Described(const json_t* line) {
  std::string text =
      Print("%6s  run %-4s %-4s %-4s %s", NumberIn(line, "number"), NumberIn(line, "run"),
            TextIn(line, "report"), TextIn(line, "method"), NumberIn(line, "status"));
  if (json_object_get(line, "packed") != nullptr) {
    text += Print("  packed %s, unpacked %s, items %s, digest %s, stream %s, JSON %s",
                  NumberIn(line, "packed"), NumberIn(line, "unpacked"), NumberIn(line, "items"),
                  TextIn(line, "digest"), TextIn(line, "zlib"), TextIn(line, "json"));
  }
  const auto fault = TextMember(line, "fault");
  return fault ? text + Print("  fault %s", *fault) : text;
}

}  // namespace

bool FollowRequests(const std::string& pageUrl,
                    const std::function<bool(const std::string& line)>& take) {
  httplib::Client client(pageUrl);
  client.set_read_timeout(60);
  json_int_t cursor = 0;
  bool hasAnswered = false;
  while (const auto answer = client.Get(Print("/api/changes?after=%lld", cursor))) {
    const JsonOwner changes(json_loads(answer->body.c_str(), 0, nullptr));
    if (!changes) {
      break;
    }
    hasAnswered = true;
    for (const json_t* const line : Elements(json_object_get(changes.Get(), "requests"))) {
      if (!take(Described(line))) {
        return true;
      }
    }
    cursor = json_integer_value(json_object_get(changes.Get(), "cursor"));
  }
  return hasAnswered;
}

}  // namespace ostrell
