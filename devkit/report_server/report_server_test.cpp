#include "devkit/report_server/report_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "devkit/report_server/request_summary.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

using namespace std::string_literals;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr auto kTicket = "/v8/rc2.php?u=1&o=00";
constexpr auto kRecord = "/v8/rc1.php?u=1";

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class ReportServerTest : public testing::Test {
 protected:
  void Start(ReportServerOptions options = {}) {
    options.port = 0;
    server.emplace(std::move(options));
    std::string why;
    ASSERT_TRUE(server->Start(&why)) << why;
  }

  // A GET, or a PUT where there is a body; status -1 when no answer came.
  httplib::Response Send(const std::string& target, const std::string* body = nullptr) const {
    httplib::Client client(server->Url());
    client.enable_server_certificate_verification(false);
    client.set_read_timeout(60);
    const httplib::Result result =
        body ? client.Put(target, *body, "text/plain") : client.Get(target);
    return result ? *result : httplib::Response();
  }
  httplib::Response Get(const std::string& target) const { return Send(target); }

  // Where the ticket leads that is asked for, and what comes of a body that is sent there.
  std::string TicketUrl(const std::string& request) const {
    const std::string answer = Get(request).body;
    return TextOf(JsonOwner(json_loadb(answer.data(), answer.size(), 0, nullptr)).Get(), "url");
  }
  httplib::Response SendTo(const std::string& url, const std::string& body) const {
    return Send(url.substr(server->Url().size()), &body);
  }

  JsonOwner LastRequest() const { return std::move(server->Requests().back()); }
  std::string ChangesBehind(uint64_t after) { return server->Changes(after, {}); }

  const PrivateFolder folder;
  std::optional<ReportServer> server;
};

TEST_F(ReportServerTest, RecordedUploads) {
  const RecordedCase cases(OSTRELL_SERVER_CASES "/upload.case");
  Start();
  for (size_t i = 0; i < cases.All("request").size(); ++i) {
    const std::string request = cases.All("request")[i];
    EXPECT_EQ(SendTo(TicketUrl(request), cases.All("body").at(i)).status, 200);
    EXPECT_EQ(TextOf(LastRequest().Get(), "report"), request.substr(4, 3));
    EXPECT_THAT(server->Log().All().back()->line, EndsWith(cases.All("line").at(i))) << request;
  }
}

// What the client of the product makes of every fault is in tests/transport.
TEST_F(ReportServerTest, RecordedAnswers) {
  const RecordedCase cases(OSTRELL_SERVER_CASES "/answer.case");
  Start({.instructions = "{\"a\":1}", .known = {"A9993E364706816ABA3E25717850C26C9CD0D89D"}});
  const size_t count = cases.All("request").size();
  for (size_t i = 0; i < count; ++i) {
    const std::string request = cases.All("request")[i];
    const std::string begin = cases.All("begin").at(i);
    const std::string end = cases.All("end").at(i);
    const httplib::Response answer = Get(request);
    EXPECT_EQ(std::to_string(answer.status), cases.All("status").at(i)) << request;
    EXPECT_THAT(answer.body, AllOf(StartsWith(begin), EndsWith(end == "whole" ? begin : end)));
    EXPECT_TRUE(end != "whole" || answer.body == begin) << request;
    const std::string fault = TextOf(LastRequest().Get(), "fault");
    EXPECT_EQ(fault.empty() ? "none" : fault, cases.All("fault").at(i)) << request;
  }
  EXPECT_EQ(server->Requests().size(), count);
}

TEST_F(ReportServerTest, PutsHaveATicketAndALimit) {
  Start({.maxBodyBytes = 1000});
  const std::string url = TicketUrl(kTicket);
  const std::pair<std::string, int> kCases[] = {
      {url, 200}, {url + "x", 404}, {server->Url() + "/put/2", 404}};
  for (const auto& [place, status] : kCases) {
    EXPECT_EQ(SendTo(place, std::string(1000, 'x')).status, status) << place;
  }
  SendTo(url, std::string(1001, 'x'));
  EXPECT_EQ(Integer64Member(LastRequest().Get(), "status"), 413);
}

TEST_F(ReportServerTest, FileThatATicketLedToIsListedAsItsPut) {
  Start();
  const std::string url = TicketUrl("/fault/file-url"s + kTicket);
  EXPECT_EQ(server->Requests().size(), 1U);
  std::ofstream(url.substr(std::string("file://").size())) << "x";
  for (int time = 0; time < 2; ++time) {
    EXPECT_THAT(ChangesBehind(0),
                HasSubstr(R"("query":{"u":"1","o":"00"},"headers":{},"status":200)"));
    EXPECT_EQ(server->Requests().size(), 2U);
  }
}

TEST_F(ReportServerTest, FaultOfThePathStandsForThoseOfTheServer) {
  Start({.faults = {Fault::kStatus404}});
  EXPECT_EQ(Get(kRecord).status, 404);
  EXPECT_EQ(Get("/fault/none"s + kTicket).status, 200);
  EXPECT_EQ(Get("/fault/redirect"s + kTicket).get_header_value("Location"), kTicket);
  server->Faults().Clear();
  server->Faults().Set(Fault::kRedirect);
  EXPECT_EQ(Get(kTicket).get_header_value("Location"), "/fault/none"s + kTicket);
  EXPECT_TRUE(SendTo(TicketUrl("/fault/put-302"s + kTicket), "").has_header("Location"));
  server->SetInstructions("{\"a\":2}");
  EXPECT_THAT(Get("/fault/none"s + kRecord).body, EndsWith("{\"a\":2}"));
}

TEST_F(ReportServerTest, TakenPortIsRefusedAndStopEndsAnAnswerThatIsUnderWay) {
  Start();
  ReportServer second({.port = server->Port()});
  std::string why;
  EXPECT_FALSE(second.Start(&why));
  EXPECT_THAT(why, EndsWith("Address already in use"));
  std::thread client([this] { EXPECT_EQ(Get("/fault/slow"s + kTicket).status, -1); });
  while (server->Requests().empty()) {
    std::this_thread::yield();
  }
  server->Stop();
  client.join();
}

// A run begins with rc1, of each client apart; the newest runs are kept, and what changed is told.
TEST_F(ReportServerTest, RunsAreToldApartAndTheNewestKept) {
  Start({.kept = {.runs = 2}});
  for (const char* target :
       {"/v8/rc1.php?regid={A}", "/v8/rc2.php?regid=A&o=1", "/v8/rc1.php?regid=B",
        "/v8/rc2.php?regid=A&o=2", "/elsewhere", "/v8/rc1.php?regid=A"}) {
    Get(target);
  }
  std::vector<uint64_t> runs;
  for (const KeptRequestPtr& request : server->Log().All()) {
    runs.push_back(request->run);
  }
  EXPECT_THAT(runs, testing::ElementsAre(2, 3));  // the first run went with its last request
  EXPECT_THAT(ChangesBehind(0),
              AllOf(StartsWith(R"({"cursor":6,"more":false,"oldest":5,"requests":[{"run":2,)"),
                    HasSubstr(R"("runs":[{"run":2,"client":"B",)")));
  EXPECT_FALSE(server->Log().SetNotSent(1, JsonOwner(json_array())));
  EXPECT_TRUE(server->Log().SetNotSent(3, JsonOwner(json_pack("[s]", "why"))));
  EXPECT_THAT(ChangesBehind(6), AllOf(HasSubstr(R"("cursor":7)"), HasSubstr(R"("requests":[])"),
                                      HasSubstr(R"("not_sent":["why"])")));
  server->Log().Clear();
  EXPECT_EQ(ChangesBehind(7), R"({"cursor":8,"more":false,"oldest":7,"requests":[],"runs":[]})");
  EXPECT_THAT(ChangesBehind(99), HasSubstr(R"("cursor":8)"));  // of a server before this one
}

TEST(RequestLogTest, BytesAreBoundedAndAnAnswerHoldsSoMany) {
  RequestLog log({.bytes = 40000});
  const HttpRequest request{
      .method = "GET", .target = "/", .headers = {}, .body = std::string(3500, 'x')};
  for (int i = 0; i < 20; ++i) {
    log.Add({.request = request});
  }
  EXPECT_EQ(log.All().size(), 10U);
  EXPECT_EQ(log.Find(10), nullptr);
  EXPECT_EQ(log.Find(11)->number, 11U);
  RequestLog many(LogLimits{});
  const HttpRequest small{.method = "GET", .target = "/"};
  for (size_t i = 0; i < RequestLog::kMaxChanges + 1; ++i) {
    many.Add({.request = small});
  }
  EXPECT_THAT(many.Changes(0, {}), StartsWith(R"({"cursor":1000,"more":true,"oldest":1,)"));
  EXPECT_THAT(many.Changes(1000, {}), StartsWith(R"({"cursor":1001,"more":false,)"));
}

TEST_F(ReportServerTest, ChangesWaitsUntilThereIsOne) {
  Start();
  std::thread client([this] { Get(kRecord); });
  EXPECT_THAT(server->Changes(0, std::chrono::minutes(1)), StartsWith(R"({"cursor":1,)"));
  client.join();
  std::thread waiting(
      [this] { EXPECT_THAT(server->Changes(1, std::chrono::hours(1)), HasSubstr("[]")); });
  server->Stop();
  waiting.join();
}

TEST(FaultSwitchesTest, ActWhenTheyAreToldTo) {
  FaultSwitches switches;
  const auto acts = [&switches](std::string_view report, int requests) {
    std::string acted;
    for (int i = 0; i < requests; ++i) {
      acted += switches.Acts(Fault::kCut, report) ? '1' : '0';
    }
    return acted;
  };
  EXPECT_EQ(acts("rc2", 1), "0");
  switches.Set(Fault::kCut, {.report = "rc2", .after = 2, .times = 3});
  EXPECT_EQ(acts("rc5", 2), "00");
  EXPECT_EQ(acts("rc2", 7), "0011100");
  EXPECT_EQ(switches.All().at(Fault::kCut).concerned, 7U);
  EXPECT_EQ(switches.All().at(Fault::kCut).acted, 3U);
  EXPECT_FALSE(switches.Acts(Fault::kBig, "rc2"));
  // The generator's first numbers for its default seed, 5489: 3499211612, 581869302, 3890346734,
  // 3586334585; half of 2^32 is 2147483648.
  switches.Set(Fault::kCut, {.probability = 0.5, .seed = 5489});
  EXPECT_EQ(acts("rc2", 4), "0100");
  switches.Set(Fault::kCut, {.probability = 0});
  EXPECT_EQ(acts("rc2", 4), "0000");
  switches.Remove(Fault::kCut);
  EXPECT_TRUE(switches.All().empty());
}

// Uploads at the same time are neither lost nor mixed, and a later run goes on behind them.
TEST_F(ReportServerTest, FilesHoldWhatCameIn) {
  const std::filesystem::path store = folder.Path() / "made";
  Start({.store = store});
  std::vector<std::thread> clients;
  clients.reserve(8);
  for (int client = 0; client < 8; ++client) {
    clients.emplace_back([this, client] {
      for (int upload = 0; upload < 6; ++upload) {
        const std::string name = std::to_string(10 * client + upload);
        SendTo(TicketUrl("/v8/rc2.php?o=00&u=" + name), name);
        server->SetInstructions(name);
      }
    });
  }
  for (std::thread& client : clients) {
    client.join();
  }
  std::set<std::string> arrived;
  int64_t number = 0;
  for (const JsonOwner& line : server->Requests()) {
    EXPECT_EQ(Integer64Member(line.Get(), "number"), ++number);
    if (TextOf(line.Get(), "method") == "PUT") {
      const std::string name = TextOf(json_object_get(line.Get(), "query"), "u");
      const std::filesystem::path file = store / std::to_string(10000 + number).substr(1);
      EXPECT_THAT(ReadFile(file.string() + ".request"),
                  AllOf(StartsWith("PUT /put/"), HasSubstr("\r\nAccept: */*\r\n"),
                        EndsWith("\r\n\r\n" + name)));
      arrived.insert(name);
    }
  }
  EXPECT_EQ(arrived.size(), 48U);

  Start({.store = store});
  SendTo(TicketUrl("/v8/rc2.php?u=%FF&o=00"),
         "\x78\x9C\x8B\x36\x8C\x05\0\x01\xD3\0\xEA"s);  // "[1]"
  EXPECT_EQ(ReadFile(store / "0098.body"), "[1]");
  EXPECT_EQ(Integer64Member(LastRequest().Get(), "ticket"), 97);
  const std::string lines = ReadFile(store / "requests.jsonl");
  EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 98);
}

}  // namespace
}  // namespace ostrell
