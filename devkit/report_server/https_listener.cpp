#include "devkit/report_server/https_listener.h"

#include <poll.h>

#include <array>
#include <chrono>
#include <thread>
#include <utility>

#include "devkit/report_server/certificate.h"
#include "devkit/report_server/loopback_server.h"

namespace ostrell {
namespace {

constexpr size_t kWorkerThreads = 16;
constexpr time_t kPeerTimeoutSeconds = 20;
constexpr auto kSlowAnswerLimit = std::chrono::seconds(30);
constexpr size_t kEndlessAnswerLimit = size_t{64} << 20;
constexpr size_t kPromisedButNotSent = 64;
// Stands on every answer of the handler, and so tells them from the library's own.
constexpr auto kServerHeader = "Server";

constexpr int kBadRequest = 400;
constexpr int kMethodNotAllowed = 405;
constexpr int kBodyTooLarge = 413;

HttpRequest RequestOf(const httplib::Request& received) {
  HttpRequest request{.method = received.method, .target = received.target};
  for (const auto& [name, value] : received.headers) {
    // The library puts four lines of its own among the headers.
    if (!name.starts_with("REMOTE_") && !name.starts_with("LOCAL_")) {
      request.headers.emplace_back(name, value);
    }
  }
  return request;
}

// True when the peer closed its side within a twentieth of a second.
bool PeerLeaves(int socket) {
  pollfd peer{.fd = socket, .events = POLLRDHUP, .revents = 0};
  return poll(&peer, 1, 50) != 0;
}

httplib::ContentProvider CutBody(std::string body) {
  return [body = std::move(body)](size_t, size_t, httplib::DataSink& sink) {
    sink.write(body.data(), body.size());
    return false;
  };
}

// Sends nothing. Called again and again, so that the library can end it on a stop.
httplib::ContentProvider SlowBody(const SSL* connection) {
  const int socket = SSL_get_fd(connection);
  const auto end = std::chrono::steady_clock::now() + kSlowAnswerLimit;
  return [socket, end](size_t, size_t, httplib::DataSink&) {
    return !PeerLeaves(socket) && std::chrono::steady_clock::now() < end;
  };
}

httplib::ContentProviderWithoutLength EndlessBody(std::string body) {
  return [body = std::move(body)](size_t sent, httplib::DataSink& sink) {
    if (sent < body.size()) {
      return sink.write(body.data(), body.size());
    }
    const std::string blanks(65536, ' ');
    return sent < kEndlessAnswerLimit && sink.write(blanks.data(), blanks.size());
  };
}

void Send(HttpAnswer answer, const httplib::Request& request, httplib::Response& response) {
  response.status = answer.status;
  response.set_header(kServerHeader, "ostrell-report-server");
  if (!answer.location.empty()) {
    response.set_header("Location", answer.location);
  }
  const size_t size = answer.body.size();
  switch (answer.delivery) {
    case Delivery::kWhole:
      response.set_content(answer.body, answer.type);
      break;
    case Delivery::kCut:
      response.set_content_provider(size + kPromisedButNotSent, answer.type,
                                    CutBody(std::move(answer.body)));
      break;
    case Delivery::kSlow:
      response.set_content_provider(size + 1, answer.type, SlowBody(request.ssl));
      break;
    case Delivery::kEndless:
      response.set_chunked_content_provider(answer.type, EndlessBody(std::move(answer.body)));
      break;
  }
}

}  // namespace

struct HttpsListener::Server : httplib::SSLServer {
  Server(const HttpsListener& ownedBy, const Certificate& identity)
      : SSLServer(identity.certificate.Get(), identity.key.Get()), owner(ownedBy) {
    PrepareForLoopback(*this, kWorkerThreads);
    set_keep_alive_max_count(1);
    set_keep_alive_timeout(kPeerTimeoutSeconds);
    set_read_timeout(kPeerTimeoutSeconds);
    set_write_timeout(kPeerTimeoutSeconds);
    set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
      return AnswerWithoutBody(request, response);
    });
    Put(R"([\s\S]*)",
        [this](const httplib::Request& request, httplib::Response& response,
               const httplib::ContentReader& reader) { AnswerPut(request, response, reader); });
    set_error_handler([this](const httplib::Request& request, httplib::Response& response) {
      if (!response.has_header(kServerHeader)) {
        Answer(RequestOf(request), response.status, request, response);
      }
    });
  }

  void Answer(HttpRequest request, int refusedStatus, const httplib::Request& received,
              httplib::Response& response) const {
    request.refusedStatus = refusedStatus;
    Send(owner.handler(request), received, response);
  }

  // A PUT is left to AnswerPut, any other body is not read.
  HandlerResponse AnswerWithoutBody(const httplib::Request& request,
                                    httplib::Response& response) const {
    if (request.method == "PUT") {
      return HandlerResponse::Unhandled;
    }
    const int refusedStatus = request.method == "GET" ? 0 : kMethodNotAllowed;
    Answer(RequestOf(request), refusedStatus, request, response);
    return HandlerResponse::Handled;
  }

  void AnswerPut(const httplib::Request& received, httplib::Response& response,
                 const httplib::ContentReader& reader) const {
    HttpRequest request = RequestOf(received);
    // The library's own limit reads all that the peer sends and does not see chunked bodies.
    bool tooLarge = false;
    const bool whole = reader([&](const char* bytes, size_t size) {
      tooLarge = size > owner.maxBodyBytes - request.body.size();
      if (!tooLarge) {
        request.body.append(bytes, size);
      }
      return !tooLarge;
    });
    const int refusedStatus = whole ? 0 : tooLarge ? kBodyTooLarge : kBadRequest;
    Answer(std::move(request), refusedStatus, received, response);
  }

  const HttpsListener& owner;
  int port = 0;
  std::thread accepting;
};

HttpsListener::HttpsListener(Handler answering, size_t bodyLimit)
    : handler(std::move(answering)), maxBodyBytes(bodyLimit) {}

HttpsListener::~HttpsListener() {
  Stop();
}

bool HttpsListener::Start(int port, std::string* why) {
  const Certificate identity = MakeLoopbackCertificate();
  auto starting = std::make_unique<Server>(*this, identity);
  if (!identity.certificate || !starting->is_valid()) {
    *why = "OpenSSL makes no certificate";
    return false;
  }
  starting->port = ListenOnLoopback(*starting, port, starting->accepting, why);
  if (starting->port < 0) {
    return false;
  }
  server = std::move(starting);
  return true;
}

void HttpsListener::Stop() {
  if (server) {
    StopListening(*server, server->accepting);
  }
}

int HttpsListener::Port() const {
  return server ? server->port : 0;
}

}  // namespace ostrell
