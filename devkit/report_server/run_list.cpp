#include "devkit/report_server/run_list.h"

#include <algorithm>
#include <utility>

#include "devkit/report_server/json_text.h"

namespace ostrell {
namespace {

std::string ClientOf(const QueryValues& query) {
  const auto found = std::ranges::find(query, "regid", &QueryValues::value_type::first);
  std::string client = found != query.end() ? found->second : "";
  std::erase_if(client, [](char letter) { return letter == '{' || letter == '}'; });
  return client;
}

}  // namespace

uint64_t RunList::RunOf(const std::string& report, const QueryValues& query, int64_t now) {
  const std::string client = ClientOf(query);
  const auto found = newestOf.find(client);
  const bool goesOn =
      client.empty() ? !runs.empty()
                     : found != newestOf.end() && report != "rc1" && runs.contains(found->second);
  if (goesOn) {
    return client.empty() ? runs.rbegin()->first : found->second;
  }
  runs.emplace(next, Run{.client = client, .began = now, .notSent = JsonOwner()});
  std::erase_if(newestOf, [this](const auto& pair) { return !runs.contains(pair.second); });
  newestOf[client] = next;
  return next++;
}

bool RunList::SetNotSent(uint64_t run, JsonOwner rows) {
  const auto found = runs.find(run);
  if (found == runs.end()) {
    return false;
  }
  found->second.notSent = std::move(rows);
  return true;
}

JsonOwner RunList::Describe(uint64_t run) const {
  const auto found = runs.find(run);
  if (found == runs.end()) {
    return {};
  }
  JsonOwner described(json_object());
  json_object_set_new(described.Get(), "run", json_integer(static_cast<json_int_t>(run)));
  json_object_set_new(described.Get(), "client", JsonString(found->second.client).Release());
  json_object_set_new(described.Get(), "began", json_integer(found->second.began));
  if (found->second.notSent) {
    json_object_set(described.Get(), "not_sent", found->second.notSent.Get());
  }
  return described;
}

}  // namespace ostrell
