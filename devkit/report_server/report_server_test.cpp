#include "devkit/report_server/report_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <zlib.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "base/bytes.h"
#include "base/hex.h"
#include "base/md5.h"

namespace ostrell {
namespace {

using namespace std::string_literals;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

std::string Packed(const std::string& text) {
  std::string packed(compressBound(text.size()), '\0');
  uLongf size = packed.size();
  compress(reinterpret_cast<Bytef*>(packed.data()), &size,
           reinterpret_cast<const Bytef*>(text.data()), text.size());
  packed.resize(size);
  return packed;
}

std::string DigestOf(const std::string& packed) {
  return UpperHex(Md5::Of(BytesOf(packed)));
}

std::string Text(const json_t* object, const char* name) {
  const char* const text = json_string_value(json_object_get(object, name));
  return text ? text : "";
}

int64_t Number(const json_t* object, const char* name) {
  return json_integer_value(json_object_get(object, name));
}

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

  // Asks for a ticket under `path` and sends `packed` where it leads. No digest: the right one.
  httplib::Response Upload(const std::string& path, const std::string& packed,
                           const std::string& digest = "") const {
    const std::string answer =
        Get(path + "&o=" + (digest.empty() ? DigestOf(packed) : digest)).body;
    const JsonOwner ticket(json_loadb(answer.data(), answer.size(), 0, nullptr));
    return Send(Text(ticket.Get(), "url").substr(server->Url().size()), &packed);
  }

  JsonOwner LastRequest() const { return std::move(server->Requests().back()); }

  std::optional<ReportServer> server;
};

TEST_F(ReportServerTest, UploadIsCheckedAgainstItsTicket) {
  const std::string array = Packed("[1,2,3]");
  const struct {
    const char* path;
    std::string packed;
    std::string digest;
    const char* line;  // the end of it
  } kCases[] = {
      {"/v8/rc2.php?u=1", array, "",
       R"("packed":15,"unpacked":7,"digest":"ok","zlib":"ok","json":"ok","items":3})"},
      {"/v8/rc5.php?u=1", array, DigestOf("[1,2,3]"),
       R"("packed":15,"unpacked":7,"digest":"mismatch","zlib":"ok","json":"ok","items":3})"},
      {"/v8/rc7.php?u=1", array.substr(0, 14), "",
       R"("packed":14,"unpacked":7,"digest":"ok","zlib":"damaged","json":"ok","items":3})"},
      {"/v8/rc3.php?u=1&h=AB", Packed("MZ"), "",
       R"("packed":10,"unpacked":2,"digest":"ok","zlib":"ok","json":"none"})"},
      {"/v8/rc4.php?v=5", Packed(""), "",
       R"("packed":8,"unpacked":0,"digest":"ok","zlib":"ok","json":"none"})"},
  };
  Start();
  for (const auto& tried : kCases) {
    EXPECT_EQ(Upload(tried.path, tried.packed, tried.digest).status, 200);
    EXPECT_EQ(Text(LastRequest().Get(), "report"), std::string(tried.path).substr(4, 3));
    EXPECT_THAT(Get("/requests").body, EndsWith(tried.line + "]"s));
  }
}

TEST_F(ReportServerTest, TicketNamesAddressAndHeaderLines) {
  Start();
  const std::string origin = server->Url();
  EXPECT_EQ(Get("/v8/rc2.php?u=1&o=00").body,
            "{\"url\":\"" + origin +
                "/put/1\",\"header\":[\"Content-Type: application/octet-stream\","
                "\"X-Ostrell-Ticket: 1\"]}");
  const std::string body = Packed("[]");
  EXPECT_EQ(Send("/put/2", &body).status, 404);  // never given out
  EXPECT_EQ(Send("/put/1x", &body).status, 404);
  EXPECT_EQ(Send("/put/1", &body).status, 200);
}

TEST_F(ReportServerTest, MachineInformationIsAnsweredWithARecord) {
  Start({.instructions = "{\"a\":1}"});
  const std::string header = "OPKR\xFF\xFF\x20\x00\x1E\x00\x00\x00\x09\x00"s;
  EXPECT_EQ(Get("/v8/rc1.php?u=1&c=2").body, header + "extension{\"a\":1}");
  server->SetInstructions("{\"a\":2}");
  EXPECT_EQ(Get("/v8/rc1.php?u=1").body, header + "extension{\"a\":2}");
}

TEST_F(ReportServerTest, SampleQuestionIsAnsweredByTheStatus) {
  Start({.known = {"A9993E364706816ABA3E25717850C26C9CD0D89D"}});
  const std::string question = "/v8/rc3.php?u=1&h=A9993E364706816ABA3E25717850C26C9CD0D89";
  EXPECT_EQ(Get(question + "D&t=2").status, 200);
  EXPECT_EQ(Get(question + "E&t=2").status, 404);
  EXPECT_EQ(Get(question + "d&t=2").status, 404);
  // With "o" it is the ticket request for that sample.
  EXPECT_THAT(Get(question + "D&o=00").body, HasSubstr("/put/"));
}

TEST_F(ReportServerTest, WhatIsNoReportIsRefusedAndKept) {
  Start();
  EXPECT_EQ(Get("/v8/rc6.php?o=00").status, 404);
  EXPECT_EQ(Get("/v8/rc2.php?u=1").status, 400);
  EXPECT_EQ(Get("/fault/nonsense/v8/rc1.php?u=1").status, 404);
  EXPECT_EQ(Get("/v8/rc2.php?o=" + std::string(9000, 'x')).status, 414);
  EXPECT_EQ(server->Requests().size(), 4U);
}

constexpr auto kTicket = "/v8/rc2.php?u=1&o=00";
constexpr auto kRecord = "/v8/rc1.php?u=1";
constexpr auto kQuestion = "/v8/rc3.php?h=AB&t=2";
constexpr auto kTicketBegin = "{\"url\":\"https://127.0.0.1:";

// What the client of the product makes of every fault is in src/transport/*_suite.cpp.
TEST_F(ReportServerTest, FaultyTicketIsWrongInOnePlaceOnly) {
  const struct {
    const char* fault;
    const char* begin;
    const char* end;
  } kCases[] = {
      {"no-url", "{\"header\":[\"Content-", "\"]}"},
      {"no-header", kTicketBegin, "\"}"},
      {"empty-header", kTicketBegin, "\"header\":[]}"},
      {"header-object", kTicketBegin, "\"header\":{}}"},
      {"header-number", kTicketBegin, "\"header\":[7]}"},
      {"header-crlf", kTicketBegin, "\"X-A: b\\r\\nX-Injected: yes\"]}"},
      {"ftp-url", "{\"url\":\"ftp://127.", "\"]}"},
      {"file-url", "{\"url\":\"file:///", "\"]}"},
      {"bare-url", "{\"url\":\"127.0.0.1:", "\"]}"},
  };
  Start();
  for (const auto& tried : kCases) {
    EXPECT_THAT(Get("/fault/"s + tried.fault + kTicket).body,
                AllOf(StartsWith(tried.begin), EndsWith(tried.end)));
    EXPECT_EQ(Text(LastRequest().Get(), "fault"), tried.fault);
  }
}

TEST_F(ReportServerTest, FaultOfThePathStandsForThoseOfTheServer) {
  Start({.faults = {Fault::kStatus404}});
  EXPECT_EQ(Get(kRecord).status, 404);
  EXPECT_EQ(Get("/fault/status-500"s + kQuestion).status, 500);
  EXPECT_EQ(Get("/fault/none"s + kTicket).status, 200);
  EXPECT_EQ(Text(LastRequest().Get(), "fault"), "");
}

TEST_F(ReportServerTest, FaultyRecordIsWrongInOnePlaceOnly) {
  Start({.instructions = "{\"a\":1}"});
  const auto block = [this](const char* fault) { return Get("/fault/"s + fault + kRecord).body; };
  const std::string magicAndKind = "OPKR\xFF\xFF\x20\x00"s;
  EXPECT_EQ(block("bad-size"), magicAndKind + "\x1F\x00\x00\x00\x09\x00"s + "extension{\"a\":1}");
  EXPECT_EQ(block("bad-extension"), magicAndKind + "\x10\x00\x00\x00\xFF\x00{}"s);
  EXPECT_EQ(block("short"), magicAndKind + "\x1E");
  EXPECT_EQ(block("not-json"),
            magicAndKind + "\x2B\x00\x00\x00\x09\x00"s + "extensionthis text is no JSON");
}

TEST_F(ReportServerTest, RedirectLeadsToTheSameRequestWithoutTheFault) {
  Start();
  EXPECT_EQ(Get("/fault/redirect"s + kTicket).get_header_value("Location"), kTicket);
  server->SetFaults({Fault::kRedirect});
  EXPECT_THAT(Get(Get(kTicket).get_header_value("Location")).body, StartsWith(kTicketBegin));
  EXPECT_TRUE(Upload("/fault/put-302/v8/rc2.php?u=1", Packed("[]")).has_header("Location"));
}

TEST_F(ReportServerTest, BodyPastTheLimitIsRefused) {
  Start({.maxBodyBytes = 1000});
  const std::string most(1000, 'x');
  const std::string tooMuch(1001, 'x');
  ASSERT_EQ(Get(kTicket).status, 200);
  EXPECT_EQ(Send("/put/1", &most).status, 200);
  Send("/put/1", &tooMuch);
  EXPECT_EQ(Number(LastRequest().Get(), "status"), 413);
}

TEST_F(ReportServerTest, TakenPortIsRefused) {
  Start();
  ReportServer second({.port = server->Port()});
  std::string why;
  EXPECT_FALSE(second.Start(&why));
  EXPECT_THAT(why, EndsWith("Address already in use"));
}

TEST_F(ReportServerTest, StopEndsAnAnswerThatIsUnderWay) {
  Start();
  std::thread client([this] { EXPECT_EQ(Get("/fault/slow"s + kTicket).status, -1); });
  while (server->Requests().empty()) {
    std::this_thread::yield();
  }
  server->Stop();
  client.join();
}

class StoreTest : public ReportServerTest {
 protected:
  void SetUp() override {
    std::string folder = testing::TempDir() + "report_server_XXXXXX";
    store = mkdtemp(folder.data());
  }
  void TearDown() override {
    server.reset();
    std::filesystem::remove_all(store);
  }

  std::filesystem::path store;
};

TEST_F(StoreTest, FilesHoldWhatCameInAndALaterRunGoesOn) {
  const std::string body = Packed("[1]");
  for (int run = 0; run < 2; ++run) {
    Start({.store = store / "made"});
    Upload("/v8/rc2.php?u=%FF", body);
  }
  const std::string request = ReadFile(store / "made/0002.request");
  EXPECT_THAT(request, StartsWith("PUT /put/1 HTTP/1.1\r\n"));
  EXPECT_THAT(request, HasSubstr("\r\nAccept: */*\r\n"));
  EXPECT_THAT(request, EndsWith("\r\n\r\n" + body));
  EXPECT_EQ(ReadFile(store / "made/0004.body"), "[1]");
  EXPECT_FALSE(exists(store / "made/0003.body"));
  EXPECT_EQ(Number(LastRequest().Get(), "number"), 4);
  EXPECT_EQ(Number(LastRequest().Get(), "ticket"), 3);
  EXPECT_EQ(std::ranges::count(ReadFile(store / "made/requests.jsonl"), '\n'), 4);
}

TEST_F(StoreTest, ConcurrentUploadsAreNeitherLostNorMixed) {
  Start({.store = store});
  std::vector<std::thread> clients(8);
  for (int client = 0; client < 8; ++client) {
    clients[client] = std::thread([this, client] {
      for (int upload = 0; upload < 6; ++upload) {
        const std::string name = std::to_string(10 * client + upload);
        Upload("/v8/rc2.php?u=" + name, Packed("[" + name + "]"));
        server->SetInstructions(name);
      }
    });
  }
  std::ranges::for_each(clients, [](std::thread& client) { client.join(); });

  std::set<std::string> arrived;
  int64_t number = 0;
  for (const JsonOwner& line : server->Requests()) {
    EXPECT_EQ(Number(line.Get(), "number"), ++number);
    if (Text(line.Get(), "method") == "PUT") {
      const std::string name = Text(json_object_get(line.Get(), "query"), "u");
      const std::string file = std::to_string(10000 + number).substr(1) + ".body";
      EXPECT_EQ(Text(line.Get(), "digest"), "ok");
      EXPECT_EQ(ReadFile(store / file), "[" + name + "]");
      arrived.insert(name);
    }
  }
  EXPECT_EQ(number, 96);
  EXPECT_EQ(arrived.size(), 48U);
}

}  // namespace
}  // namespace ostrell
