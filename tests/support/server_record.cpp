#include "tests/support/server_record.h"

#include <cstdlib>
#include <random>
#include <stdexcept>

#include "base/json.h"
#include "transport/http.h"

namespace ostrell {
namespace {

void AppendTo(std::string& list, const std::string& element) {
  list += (list.empty() ? "" : ", ") + element;
}

void Flatten(const std::string& prefix, json_t* object, ReceivedRequest& request) {
  const char* key = nullptr;
  json_t* value = nullptr;
  json_object_foreach(object, key, value) {
    if (json_is_object(value)) {
      Flatten(prefix + key + ".", value, request);
    } else if (json_is_string(value)) {
      request[prefix + key] = json_string_value(value);
    } else {
      request[prefix + key] = std::to_string(json_integer_value(value));
    }
  }
}

ReceivedRequest RequestOf(json_t* line) {
  ReceivedRequest flat;
  Flatten("", line, flat);
  ReceivedRequest request = flat;
  for (const auto& [name, text] : flat) {
    if (name.starts_with("headers.")) {
      AppendTo(request["header names"], name.substr(8));
    }
  }
  return request;
}

std::string AddressIn(const char* variable) {
  const char* const url = std::getenv(variable);
  if (url == nullptr) {
    throw std::runtime_error(std::string(variable) + " does not name a running report server");
  }
  return url;
}

// What the server's page is told.
std::string TextAt(const std::string& path) {
  std::string text;
  const auto append = [&text](std::span<const std::byte> block) {
    text.append(reinterpret_cast<const char*>(block.data()), block.size());
    return true;
  };
  HttpGet((AddressIn("OSTRELL_TEST_VIEWER") + path).c_str(), append, nullptr);
  return text;
}

std::string lastChange = "0";

}  // namespace

std::string TestServerUrl() {
  return AddressIn("OSTRELL_TEST_SERVER");
}

std::string FreshToken() {
  static uint64_t next = std::random_device()();
  return "T" + std::to_string(next++);
}

std::string ReportUrlOf(std::string_view report, std::string_view token, std::string_view fault) {
  std::string url = TestServerUrl();
  if (!fault.empty()) {
    url.append("/fault/").append(fault);
  }
  return url.append("/v8/").append(report).append(".php?u=U&regid=").append(token);
}

std::vector<ReceivedRequest> RequestsWith(const char* queryName, std::string_view value,
                                          const std::string& after) {
  std::vector<ReceivedRequest> requests;
  lastChange = after;
  for (bool isMore = true; isMore;) {
    const std::string text = TextAt("/api/changes?wait=0&after=" + lastChange);
    const JsonOwner changes(json_loadb(text.data(), text.size(), 0, nullptr));
    const auto cursor = Integer64Member(changes.Get(), "cursor");
    if (!cursor) {
      throw std::runtime_error("the report server does not give its record");
    }
    for (json_t* const line : Elements(json_object_get(changes.Get(), "requests"))) {
      ReceivedRequest request = RequestOf(line);
      if (request["query." + std::string(queryName)] == value) {
        requests.push_back(std::move(request));
      }
    }
    lastChange = std::to_string(*cursor);
    isMore = json_is_true(json_object_get(changes.Get(), "more"));
  }
  return requests;
}

std::string LastChange() {
  return lastChange;
}

std::string BodyOf(const ReceivedRequest& request) {
  return TextAt("/api/requests/" + request.at("number") + "/body");
}

std::string StepsOf(std::vector<ReceivedRequest> requests) {
  std::string steps;
  for (ReceivedRequest& request : requests) {
    AppendTo(steps, request["method"] + " " + request["status"]);
  }
  return steps;
}

}  // namespace ostrell
