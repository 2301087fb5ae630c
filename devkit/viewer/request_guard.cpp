#include "devkit/viewer/request_guard.h"

#include <string>
#include <utility>

#include "base/print.h"

namespace ostrell {
namespace {

constexpr std::pair<const char*, const char*> kHeadersOfAll[] = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self'; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'; "
     "require-trusted-types-for 'script'; trusted-types 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cache-Control", "no-store"}};

}  // namespace

void Refuse(httplib::Response& response, int status, const char* why) {
  response.status = status;
  response.set_content(std::string(why) + "\n", "text/plain");
}

bool LetIn(const httplib::Request& request, int port, httplib::Response& response) {
  for (const auto& [name, value] : kHeadersOfAll) {
    response.set_header(name, value);
  }
  const std::string host = request.get_header_value("Host");
  const std::string colonPort = Print(":%d", port);
  const std::string site = request.get_header_value("Sec-Fetch-Site");
  if (host != "127.0.0.1" + colonPort && host != "localhost" + colonPort) {
    Refuse(response, 403, "not under this name");
  } else if (!site.empty() && site != "none" && site != "same-origin") {
    Refuse(response, 403, "not from another page");
  } else if (request.method != "GET" && request.get_header_value("Content-Type") != kJson) {
    Refuse(response, 415, "a change is application/json");
  } else {
    return true;
  }
  return false;
}

}  // namespace ostrell
