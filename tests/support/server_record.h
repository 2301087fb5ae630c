#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace ostrell {

// The local report server that the transport suite talks to, and what it says it received.

// The address in the environment variable OSTRELL_TEST_SERVER. Throws, which fails the test, when
// it is not set.
std::string TestServerUrl();

// A value that no earlier request carried; a test puts it into the query to know its requests by.
std::string FreshToken();

// The URL of a report whose query holds `token` as "regid". With a fault's name the server commits
// that fault at the request and at the PUT that it leads to.
std::string ReportUrlOf(std::string_view report, std::string_view token,
                        std::string_view fault = {});

struct ReceivedRequest {
  std::string step;    // method and status answered: "PUT 200"
  std::string target;  // path and query
  std::map<std::string, std::string> headers;
  int64_t ticket = 0;
  // Of a PUT: byte counts, and what the server found when it checked the body.
  int64_t packed = 0;
  int64_t unpacked = 0;
  int64_t items = 0;
  std::string digest;
  std::string zlib;
  std::string json;
};

// The requests with that query value in the order of their arrival; a PUT counts with the query of
// its ticket's request.
std::vector<ReceivedRequest> RequestsWith(const char* queryName, std::string_view value);

std::vector<std::string> StepsOf(const std::vector<ReceivedRequest>& requests);
std::vector<std::string> HeaderNamesOf(const ReceivedRequest& request);

}  // namespace ostrell
