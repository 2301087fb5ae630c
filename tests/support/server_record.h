#pragma once

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

// What the server noted of a request, as text: "method", "status", "target" and what else its
// record holds, "headers.NAME" for each header; and "header names", separated by commas.
using ReceivedRequest = std::map<std::string, std::string>;

// The requests behind the change `after` with that query value in the order of their arrival; a PUT
// counts with the query of its ticket's request.
std::vector<ReceivedRequest> RequestsWith(const char* queryName, std::string_view value,
                                          const std::string& after = "0");

// The unpacked body of a PUT, as long as the server keeps it.
std::string BodyOf(const ReceivedRequest& request);

// The newest change that these calls have seen: a request that came in.
std::string LastChange();

// "GET 200, PUT 200".
std::string StepsOf(std::vector<ReceivedRequest> requests);

}  // namespace ostrell
