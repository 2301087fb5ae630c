#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/print.h"
#include "tests/support/fake_run.h"
#include "tests/support/server_record.h"

namespace ostrell {

using Steps = std::vector<std::string>;
using Times = std::vector<std::pair<std::string, int64_t>>;

// A run against the running report server, under a client id of its own. At its end every object of
// the closed libraries has been released.
class JobRun : public FakeRun {
 public:
  // With a fault's name the server commits that fault at every request.
  explicit JobRun(const std::string& fault = {}) {
    baseUrl = TestServerUrl() + (fault.empty() ? "" : "/fault/" + fault);
    clientId = FreshToken();
  }
  ~JobRun() {
    EXPECT_EQ(policydb.live, 0);
    EXPECT_EQ(svclink.live, 0);
    EXPECT_TRUE(policydb.dataPath.empty() || policydb.dataPath == paths.data.utf8.View());
  }
  JobRun(const JobRun&) = delete;
  JobRun& operator=(const JobRun&) = delete;

  const Times& Recorded() const { return store.written; }

  // What the server received: a GET as report, query and status, "rc4 v=5&o 200", without the
  // digest behind "o" and without the identity, which is checked; a PUT as "PUT 200" and its
  // unpacked body, which is checked against that digest.
  Steps Received() const {
    Steps steps;
    for (ReceivedRequest& request : RequestsWith("regid", clientId, firstNumber)) {
      const bool isPut = request["method"] == "PUT";
      EXPECT_EQ(request["digest"], isPut ? "ok" : "");
      steps.push_back((isPut ? "PUT" : Asked(request["target"])) + " " + request["status"] +
                      (isPut ? " " + Readable(BodyOf(request)) : ""));
    }
    return steps;
  }

 private:
  const std::string firstNumber = LastChange();

  // Characters that are repeated 32 times or more as "x{32}", and other than printable ASCII and
  // UTF-8 as "\xhh".
  static std::string Readable(std::string_view bytes) {
    std::string text;
    for (size_t at = 0; at < bytes.size();) {
      const auto character = static_cast<unsigned char>(bytes[at]);
      const size_t end = std::min(bytes.find_first_not_of(bytes[at], at), bytes.size());
      const size_t count = end - at >= 32 ? end - at : 1;
      text += character < 0x20 || character == 0x7F ? Print("\\x%02x", unsigned{character})
                                                    : std::string(1, bytes[at]);
      text += count > 1 ? "{" + std::to_string(count) + "}" : "";
      at += count;
    }
    return text;
  }

  std::string Asked(const std::string& target) const {
    const size_t report = target.find("/rc") + 1;
    std::string query = target.substr(report + 8) + "&";  // behind ".php?"
    for (const std::string& part : {"u=" + machineIdentity + "&", "regid=" + clientId + "&"}) {
      const size_t at = query.find(part);
      EXPECT_NE(at, std::string::npos) << target;
      query.erase(at, part.size());
    }
    query.pop_back();
    if (const size_t digest = query.rfind("o="); digest == query.size() - 34) {
      query.resize(digest + 1);
    }
    return target.substr(report, 3) + " " + query;
  }
};

}  // namespace ostrell
