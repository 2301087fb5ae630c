#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/fake_run.h"
#include "tests/support/server_record.h"
#include "transport/pack_body.h"

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
  }
  JobRun(const JobRun&) = delete;
  JobRun& operator=(const JobRun&) = delete;

  int64_t& Last(const char* key) { return store.times[key]; }
  const Times& Recorded() const { return store.written; }

  // What the server received: a GET as report, query without the identity, which is checked, and
  // status, "rc4 v=5&o=DIGEST 200"; a PUT, whose body is checked against its digest, as "PUT 200".
  Steps Received() const {
    Steps steps;
    auto requests = RequestsWith("regid", clientId);
    for (ReceivedRequest& request : requests) {
      const bool isPut = request["method"] == "PUT";
      EXPECT_EQ(request["digest"], isPut ? "ok" : "");
      steps.push_back((isPut ? "PUT" : Asked(request["target"])) + " " + request["status"]);
    }
    return steps;
  }

 private:
  std::string Asked(const std::string& target) const {
    const size_t report = target.find("/rc") + 1;
    std::string query = target.substr(report + 8) + "&";  // behind ".php?"
    for (const std::string& part : {"u=" + machineIdentity + "&", "regid=" + clientId + "&"}) {
      const size_t at = query.find(part);
      EXPECT_NE(at, std::string::npos) << target;
      query.erase(at, part.size());
    }
    return target.substr(report, 3) + " " + query.substr(0, query.size() - 1);
  }
};

// A folder of its own for the product's pop-up block database, which is not made yet.
struct PopupDatabase {
  PopupDatabase() { std::filesystem::create_directory(folder); }
  ~PopupDatabase() { std::filesystem::remove_all(folder); }
  PopupDatabase(const PopupDatabase&) = delete;
  PopupDatabase& operator=(const PopupDatabase&) = delete;

  // Makes it with these rows: "(TIME,'DETAIL'),...".
  void Fill(const std::string& rows) const {
    constexpr auto kSchema =
        "CREATE TABLE BlockItemLog(id INTEGER PRIMARY KEY AUTOINCREMENT, ts INTEGER, detail "
        "TEXT,iname Text);"
        "CREATE INDEX idx_BlockItemLog_ts_group_item ON BlockItemLog(ts);"
        "INSERT INTO BlockItemLog(ts,detail) VALUES";
    sqlite3* database = nullptr;
    EXPECT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, (kSchema + rows).c_str(), nullptr, nullptr, nullptr),
              SQLITE_OK);
    EXPECT_EQ(sqlite3_close(database), SQLITE_OK);
  }

  const std::filesystem::path folder = std::filesystem::temp_directory_path() / FreshToken();
  const std::string path = (folder / "adblkuser.db").string();
};

// A ticket request for that body: `ask` is the report and its query.
inline std::string TicketFor(const std::string& ask, const std::string& body) {
  ByteChain packed;
  std::string digest;
  EXPECT_EQ(PackBody(packed, &digest, body.data(), static_cast<uint32_t>(body.size())), 1);
  return ask + "o=" + digest + " 200";
}

// The steps of an upload that arrives.
inline Steps Upload(const std::string& ask, const std::string& body) {
  return {TicketFor(ask, body), "PUT 200"};
}

}  // namespace ostrell
