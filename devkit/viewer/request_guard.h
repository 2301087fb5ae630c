#pragma once

#include <httplib.h>

namespace ostrell {

inline constexpr auto kJson = "application/json";

// Whether a request to the page on that port is the page's own, or a program's of this machine; if
// not, the answer says why. Sets what stands on every answer: the policy under which a browser runs
// the page's scripts and nothing else.
bool LetIn(const httplib::Request& request, int port, httplib::Response& response);

// An answer of one line.
void Refuse(httplib::Response& response, int status, const char* why);

}  // namespace ostrell
