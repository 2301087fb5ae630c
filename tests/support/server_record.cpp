#include "tests/support/server_record.h"

#include <cstdlib>
#include <random>
#include <stdexcept>

#include "base/json.h"
#include "transport/http.h"

namespace ostrell {
namespace {

std::string TextOf(const json_t* object, const char* name) {
  const char* const text = json_string_value(json_object_get(object, name));
  return text != nullptr ? text : "";
}

int64_t NumberOf(const json_t* object, const char* name) {
  return json_integer_value(json_object_get(object, name));
}

ReceivedRequest RequestOf(const json_t* line) {
  ReceivedRequest request{
      .step = TextOf(line, "method") + " " + std::to_string(NumberOf(line, "status")),
      .target = TextOf(line, "target"),
      .headers = {},
      .ticket = NumberOf(line, "ticket"),
      .packed = NumberOf(line, "packed"),
      .unpacked = NumberOf(line, "unpacked"),
      .items = NumberOf(line, "items"),
      .digest = TextOf(line, "digest"),
      .zlib = TextOf(line, "zlib"),
      .json = TextOf(line, "json")};
  const char* name = nullptr;
  json_t* value = nullptr;
  json_object_foreach(json_object_get(line, "headers"), name, value) {
    request.headers[name] = json_string_value(value);
  }
  return request;
}

JsonOwner ServerRecord() {
  std::string text;
  const auto append = [&text](std::span<const std::byte> block) {
    text.append(reinterpret_cast<const char*>(block.data()), block.size());
    return true;
  };
  if (!HttpGet((TestServerUrl() + "/requests").c_str(), append, nullptr)) {
    throw std::runtime_error("the report server does not answer");
  }
  JsonOwner record(json_loadb(text.data(), text.size(), 0, nullptr));
  if (!json_is_array(record.Get())) {
    throw std::runtime_error("the report server's record is no array");
  }
  return record;
}

}  // namespace

std::string TestServerUrl() {
  const char* const url = std::getenv("OSTRELL_TEST_SERVER");
  if (url == nullptr) {
    throw std::runtime_error("OSTRELL_TEST_SERVER does not name a running report server");
  }
  return url;
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

std::vector<ReceivedRequest> RequestsWith(const char* queryName, std::string_view value) {
  const JsonOwner record = ServerRecord();
  std::vector<ReceivedRequest> requests;
  for (size_t i = 0; i < json_array_size(record.Get()); ++i) {
    const json_t* const line = json_array_get(record.Get(), i);
    if (TextOf(json_object_get(line, "query"), queryName) == value) {
      requests.push_back(RequestOf(line));
    }
  }
  return requests;
}

std::vector<std::string> StepsOf(const std::vector<ReceivedRequest>& requests) {
  std::vector<std::string> steps;
  steps.reserve(requests.size());
  for (const ReceivedRequest& request : requests) {
    steps.push_back(request.step);
  }
  return steps;
}

std::vector<std::string> HeaderNamesOf(const ReceivedRequest& request) {
  std::vector<std::string> names;
  names.reserve(request.headers.size());
  for (const auto& [name, value] : request.headers) {
    names.push_back(name);
  }
  return names;
}

}  // namespace ostrell
