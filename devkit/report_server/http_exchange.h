#pragma once

#include <string>
#include <utility>
#include <vector>

namespace ostrell {

// A request as it came in.
struct HttpRequest {
  std::string method;
  std::string target;  // path and query
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
  int refusedStatus = 0;  // the status it is refused with when it breaks a limit or HTTP; else 0
};

// How the body of an answer is sent.
enum class Delivery {
  kWhole,
  kCut,      // all of it, but more was promised
  kSlow,     // not at all, and the connection stays open
  kEndless,  // all of it, then white space without end
};

struct HttpAnswer {
  int status = 200;
  std::string body{};
  std::string type = "application/json";
  std::string location{};  // of a redirect
  Delivery delivery = Delivery::kWhole;
};

}  // namespace ostrell
