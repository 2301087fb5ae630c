#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <string>

#include "devkit/report_server/https_listener.h"
#include "devkit/report_server/packed_record_writer.h"
#include "tests/support/fake_svclink.h"
#include "transport/fetch_packed_json.h"
#include "transport/http.h"
#include "transport/upload_report.h"

// The longest and the largest answers, from servers of this program's own.

namespace {

// While it is set, waiting for a peer takes no time: the clock goes on by as much.
bool isWaitingSkipped = false;
std::atomic<int64_t> skippedMilliseconds = 0;

}  // namespace

// In the place of the C library's, for libcurl.
extern "C" int poll(pollfd* peers, nfds_t count, int milliseconds) {
  const bool isSkipped = isWaitingSkipped && milliseconds > 0;
  const auto ready =
      static_cast<int>(syscall(SYS_poll, peers, count, isSkipped ? 0 : milliseconds));
  skippedMilliseconds += isSkipped && ready == 0 ? milliseconds : 0;
  return ready;
}
extern "C" int clock_gettime(clockid_t clock, timespec* time) {
  const auto result = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  const int64_t milliseconds = time->tv_nsec / 1000000 + skippedMilliseconds;
  time->tv_sec += milliseconds / 1000;
  time->tv_nsec = time->tv_nsec % 1000000 + milliseconds % 1000 * 1000000;
  return result;
}

namespace ostrell {
namespace {

// Peers connect to it and hear nothing; gives the port.
int ListenInSilence() {
  const int listening = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{.sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}};
  socklen_t size = sizeof(address);
  EXPECT_EQ(bind(listening, reinterpret_cast<sockaddr*>(&address), size), 0);
  EXPECT_EQ(listen(listening, 16), 0);
  EXPECT_EQ(getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size), 0);
  return ntohs(address.sin_port);
}

// Seconds until a transfer fails.
int64_t SecondsOf(const auto& transfer) {
  const int64_t before = skippedMilliseconds;
  isWaitingSkipped = true;
  EXPECT_FALSE(transfer());
  isWaitingSkipped = false;
  return (skippedMilliseconds - before + 500) / 1000;
}

TEST(Http, SilentServerIsWaitedForUpToTheLimits) {
  const std::string peer = "://127.0.0.1:" + std::to_string(ListenInSilence());
  const auto get = [&](const std::string& scheme) {
    return SecondsOf([&] { return HttpGet((scheme + peer).c_str(), DiscardBody, nullptr); });
  };
  const auto put = [&](const std::string& scheme) {
    ByteChain body;
    return SecondsOf([&] { return HttpPut((scheme + peer).c_str(), {}, body, nullptr, nullptr); });
  };
  EXPECT_EQ(get("http"), 60);
  EXPECT_EQ(put("http"), 900);
  // Without its half of the handshake there is no connection.
  EXPECT_EQ(get("https"), 20);
  EXPECT_EQ(put("https"), 20);
}

// Answers of 4 MiB and of one byte more, most of it a member that is ignored.
TEST(Http, SoundAnswersAreTakenUpTo4MiB) {
  size_t excess = 0;
  std::string url;
  HttpsListener server(
      [&](const HttpRequest& request) -> HttpAnswer {
        const bool isTicket = request.target.find("o=") != std::string::npos;
        std::string json = R"({"url":")" + url + R"(/put","header":[],"other":")";
        json.append((isTicket ? 4194304 : 4194304 - 14) + excess - json.size() - 2, 'x') += "\"}";
        return {.body = isTicket ? json : PackRecord(json, "")};
      },
      1024);
  std::string why;
  ASSERT_TRUE(server.Start(0, &why)) << why;
  url = "https://127.0.0.1:" + std::to_string(server.Port());
  for (excess = 0; excess < 2; ++excess) {
    FakeSvclink svclink;
    EXPECT_EQ(FetchPackedJson(url.c_str(), nullptr, svclink.Library()).Get() != nullptr,
              excess == 0);
    EXPECT_EQ(UploadReport(url.c_str(), "", 0), excess == 0 ? 1 : 0);
  }
}

}  // namespace
}  // namespace ostrell
