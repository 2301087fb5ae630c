#include <openssl/bio.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <random>
#include <regex>

#include "base/bounded_json.h"
#include "base/hex.h"
#include "base/owner.h"
#include "base/print.h"
#include "base/text.h"
#include "transport/http.h"
#include "transport/packed_record.h"
#include "transport/report_url.h"
#include "transport/upload_report.h"
#include "transport/upload_ticket.h"

namespace ostrell {
namespace {

constexpr auto kUsage =
    R"(Usage: report_conformance URL [--store-of-known SHA1]

Asks a report server, "https://host[:port]", what docs/report-protocol.md says, by the agent's own
transport and time limits: a line each, "ok" or "WRONG" and what came instead. SHA1 is of a sample
that the server knows. It sees some 9 MiB of uploads by the client id "conformance".
Exit codes: 0 nothing is wrong, 1 something is, 2 wrong arguments.
)";

constexpr std::string_view kMachine = "C000000000000000000000000000000000000000";
constexpr std::string_view kClient = "conformance";
constexpr int32_t kNoAnswer = 0;
// An empty body as it travels, and its digest.
constexpr std::string_view kPackedBody("\x78\x9C\x03\x00\x00\x00\x00\x01", 8);
constexpr auto kDigest = "FB0FC3AB8C050179A378DCB10368ACF6";

struct Peer {
  std::string base;         // scheme and host, as the agent has it
  std::string knownSample;  // empty: none is known of

  ReportOrigin Origin() const {
    return {.baseUrl = base, .machineIdentity = kMachine, .clientId = kClient};
  }
};

// What is wrong, for the functions below; empty where the status is in [from, to).
std::string Unless(int32_t status, int32_t from, int32_t to) {
  return status >= from && status < to ? ""
         : status == kNoAnswer         ? "no whole answer"
                                       : Print("status %d", status);
}

std::string RandomText(size_t size) {
  static std::mt19937_64 numbers(std::random_device{}());
  std::string text(size, '\0');
  std::ranges::generate(text, [] { return static_cast<char>(numbers()); });
  return text;
}

std::string RandomSha1() {
  const std::string text = RandomText(20);
  return UpperHex(std::as_bytes(std::span(text)));
}

std::string ReportUrlOf(const Peer& peer, std::string_view report) {
  if (report == "rc3") {
    return std::string(SampleUploadUrl(peer.Origin(), RandomSha1()).View());
  }
  return Print("%s/v8/%s.php?u=%s&regid=%s", peer.base, report, kMachine, kClient);
}

// An empty one stands for an answer that the agent does not take.
UploadTicket TicketOf(const Peer& peer, std::string_view report) {
  ByteChain answer(kMaxAnswerBytes);
  const std::string url = Print("%s&o=%s", ReportUrlOf(peer, report), kDigest);
  const bool isWhole = GetToChain(url.c_str(), answer, nullptr) == 1;
  return (isWhole ? ReadUploadTicket(answer) : std::nullopt).value_or(UploadTicket());
}

std::string AskForTicket(const Peer& peer, std::string_view report) {
  return TicketOf(peer, report).url.empty() ? "no ticket that the agent takes" : "";
}

std::string CompareTickets(const Peer& peer) {
  const std::string first = TicketOf(peer, "rc2").url;
  return first != TicketOf(peer, "rc2").url ? "" : "two requests, one URL or none";
}

int32_t Get(const std::string& url) {
  int32_t status = kNoAnswer;
  HttpGet(url.c_str(), DiscardBody, &status);
  return status;
}

std::string AskForRecord(const Peer& peer) {
  std::string answer;
  int32_t status = kNoAnswer;
  const auto url = MachineInformationUrl(peer.Origin(), {.productVersion = "1.0"});
  const auto append = [&answer](std::span<const std::byte> block) {
    answer.append(reinterpret_cast<const char*>(block.data()), block.size());
    return answer.size() <= kMaxAnswerBytes;
  };
  HttpGet(url.CStr(), append, &status);
  if (status != 200) {
    return Unless(status, 200, 201);
  }
  const auto json = PackedRecordJson(std::as_bytes(std::span(answer)));
  return json && ParseJson(*json) ? "" : "no sound record of a JSON document";
}

std::string Upload(const Peer& peer, size_t size) {
  const std::string body = RandomText(size);
  int32_t status = kNoAnswer;
  UploadReport(ReportUrlOf(peer, "rc4").c_str(), body.data(), static_cast<uint32_t>(size), nullptr,
               &status);
  return Unless(status, 200, 300);
}

std::string PutTwice(const Peer& peer) {
  const auto [url, headerLines] = TicketOf(peer, "rc2");
  std::string wrong;
  for (int time = 0; time < 2 && wrong.empty(); ++time) {
    ByteChain body;
    body.Append(std::as_bytes(std::span(kPackedBody)));
    int32_t status = kNoAnswer;
    HttpPut(url.c_str(), headerLines, body, nullptr, &status);
    wrong = Unless(status, 200, 300);
  }
  return wrong;
}

int ReadStatus(BIO* stream) {
  constexpr std::string_view kVersion = "HTTP/1.1 ";
  std::string head;
  for (char next = 0; !head.ends_with("\r\n\r\n"); head += next) {
    if (head.size() == kMaxHeaderBytes || BIO_read(stream, &next, 1) != 1) {
      return 0;
    }
  }
  return head.starts_with(kVersion) ? std::atoi(head.c_str() + kVersion.size()) : 0;
}

// A request that the agent's own transport does not make: the status behind its header lines and,
// if that is the go-ahead, the one behind the packed body. kNoAnswer for none of HTTP/1.1 within 20
// s.
std::pair<int, int> StatusesOf(std::string_view method, const std::string& url,
                               std::string_view lines) {
  std::smatch parts;
  if (!std::regex_match(url, parts, std::regex("(https?)://([^/]+)(/.*)"))) {
    return {kNoAnswer, kNoAnswer};
  }
  const std::string scheme = parts[1];
  const std::string host = parts[2];
  const ClosedBy<SSL_CTX*, &SSL_CTX_free> context(SSL_CTX_new(TLS_client_method()));
  const ClosedBy<BIO*, &BIO_free_all> stream(scheme == "https" ? BIO_new_ssl_connect(context.Get())
                                                               : BIO_new(BIO_s_connect()));
  BIO_set_conn_hostname(stream.Get(), host.c_str());
  if (host.find(':') == std::string::npos) {
    BIO_set_conn_port(stream.Get(), scheme == "https" ? "443" : "80");
  }
  const bool isUp = BIO_do_connect(stream.Get()) == 1;
  constexpr timeval kLimit{.tv_sec = 20, .tv_usec = 0};
  setsockopt(static_cast<int>(BIO_get_fd(stream.Get(), nullptr)), SOL_SOCKET, SO_RCVTIMEO, &kLimit,
             sizeof kLimit);
  const auto ask = [&](std::string_view text) {
    const auto size = static_cast<int>(text.size());
    const bool isSent = isUp && BIO_write(stream.Get(), text.data(), size) == size;
    return isSent ? ReadStatus(stream.Get()) : kNoAnswer;
  };
  const int first = ask(
      Print("%s %s HTTP/1.1\r\nHost: %s\r\n%s\r\n", method, std::string(parts[3]), host, lines));
  return {first, first == 100 ? ask(kPackedBody) : kNoAnswer};
}

// The agent announces every body. Without a go-ahead it waits for a second, after 417 it makes the
// request once more and does not ask.
std::string PutWithExpect(const Peer& peer) {
  const auto [url, headerLines] = TicketOf(peer, "rc2");
  std::string lines = "Content-Length: 8\r\nExpect: 100-continue\r\n";
  for (const std::string& line : headerLines) {
    if (EqualsIgnoringCase(line, "Expect:")) {
      return {};  // with this line the agent does not ask
    }
    lines += line + "\r\n";
  }
  const auto [first, last] = StatusesOf("PUT", url, lines);
  return first == 100 ? Unless(last, 200, 300) : Unless(first, 417, 418);
}

std::string UseOtherMethod(const Peer& peer) {
  const std::string url = Print("%s&o=%s", ReportUrlOf(peer, "rc2"), kDigest);
  return Unless(StatusesOf("POST", url, "Content-Length: 0\r\n").first, 400, 600);
}

std::string AskForSample(const Peer& peer, const std::string& digest, int32_t expected,
                         const std::string& path = "C%3A%5Ca.exe") {
  const int32_t status = Get(SampleQuestionUrl(peer.Origin(), digest, 2, path).CStr());
  return Unless(status, expected, expected + 1);
}

struct Check {
  std::string_view name;
  std::string (*wrong)(const Peer& peer);
};
constexpr std::string_view kKnownSample = "known sample";
constexpr Check kChecks[] = {
    {"HTTPS, any certificate",
     [](const Peer& peer) {
       return peer.base.starts_with("https:") ? Unless(Get(peer.base + "/"), 100, 1000)
                                              : "no HTTPS";
     }},
    {"rc1", AskForRecord},
    {"ticket rc2", [](const Peer& peer) { return AskForTicket(peer, "rc2"); }},
    {"ticket rc3", [](const Peer& peer) { return AskForTicket(peer, "rc3"); }},
    {"ticket rc4", [](const Peer& peer) { return AskForTicket(peer, "rc4"); }},
    {"ticket rc5", [](const Peer& peer) { return AskForTicket(peer, "rc5"); }},
    {"ticket rc7", [](const Peer& peer) { return AskForTicket(peer, "rc7"); }},
    {"tickets differ", CompareTickets},
    {"PUT", [](const Peer& peer) { return Upload(peer, 1000); }},
    {"PUT of nothing", [](const Peer& peer) { return Upload(peer, 0); }},
    {"PUT of 8 MiB", [](const Peer& peer) { return Upload(peer, size_t{8} << 20); }},
    {"PUT twice", PutTwice},
    {"PUT with Expect", PutWithExpect},
    {"new sample", [](const Peer& peer) { return AskForSample(peer, RandomSha1(), 404); }},
    {kKnownSample, [](const Peer& peer) { return AskForSample(peer, peer.knownSample, 200); }},
    {"question of 4095 bytes",
     [](const Peer& peer) {
       return AskForSample(peer, RandomSha1(), 404, std::string(kSampleQuestionUrlSize, 'p'));
     }},
    {"report without digest",
     [](const Peer& peer) { return Unless(Get(ReportUrlOf(peer, "rc2")), 400, 600); }},
    {"other path",
     [](const Peer& peer) { return Unless(Get(ReportUrlOf(peer, "rc6")), 400, 600); }},
    {"other method", UseOtherMethod},
};

int Run(int argc, char** argv) {
  constexpr int kUsageError = 2;
  std::signal(SIGPIPE, SIG_IGN);  // a peer that closes is a failed check
  const bool hasKnown = argc == 4 && argv[2] == std::string_view("--store-of-known");
  if (argc != 2 && !hasKnown) {
    std::fputs(kUsage, stderr);
    return kUsageError;
  }
  const Peer peer{.base = argv[1], .knownSample = hasKnown ? argv[3] : ""};
  int exitCode = 0;
  for (const auto& [name, find] : kChecks) {
    if (!hasKnown && name == kKnownSample) {
      continue;
    }
    const std::string wrong = find(peer);
    const std::string line = Print("%-6s %-24s %s", wrong.empty() ? "ok" : "WRONG", name, wrong);
    std::puts(std::string(TrimTrailingBlanks(line)).c_str());
    exitCode = wrong.empty() ? exitCode : 1;
  }
  return exitCode;
}

}  // namespace
}  // namespace ostrell

int main(int argc, char** argv) {
  try {
    return ostrell::Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "report_conformance: %s\n", error.what());
    return 1;
  }
}
