#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "base/bytes.h"
#include "base/hex.h"
#include "base/md5.h"
#include "devkit/report_server/certificate.h"

namespace ostrell {

// The bytes that a connection gets, and how it ends.
struct HostileAnswer {
  std::string bytes = {};
  std::string again = {};     // then this, over and over until the client leaves, 64 MiB at most
  bool isPatient = false;     // one a second, without a limit
  size_t piece = 0;           // bytes a write of the first 1000; 0: all at once
  bool isEarly = false;       // before a body is read
  bool isPlain = false;       // in place of the TLS handshake
  int handshakeSteps = 9999;  // of OpenSSL's, after which it is cut
  bool hasNotice = true;      // that TLS ends
  bool isReset = false;
};

// What came over a connection.
struct HostileRequest {
  std::string bytes = {};
  std::string head = {};  // empty where it did not arrive
  bool isWhole = false;   // a PUT whose body is what the last ticket request announced
};

// One connection of the server's.
class HostilePeer {
 public:
  explicit HostilePeer(BIO* accepted)
      : link(accepted), socket(static_cast<int>(BIO_get_fd(accepted, nullptr))) {
    const timeval limit{.tv_sec = 20, .tv_usec = 0};  // for one that waits for us
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  }

  // The first byte says whether it is TLS.
  void Accept(SSL_CTX* context, int steps) {
    static int stepsLeft;
    stepsLeft = steps;
    char first = 0;
    if (recv(socket, &first, 1, MSG_PEEK) != 1 || first != SSL3_RT_HANDSHAKE) {
      return;
    }
    BIO* const layer = BIO_new_ssl(context, 0);
    BIO_get_ssl(layer, &tls);
    SSL_set_quiet_shutdown(tls, 1);
    SSL_set_info_callback(tls, [](const SSL* at, int, int) {
      if (stepsLeft-- == 0) {
        shutdown(SSL_get_fd(at), SHUT_RDWR);
      }
    });
    link.Reset(BIO_push(layer, link.Release()));
    BIO_do_handshake(link.Get());
  }

  // The body's end is where its digest is the announced one, whatever length the head promises.
  enum Until { kHead, kBody, kEnd };
  void Receive(HostileRequest& request, Until until, std::string& digest) {
    std::array<char, 16384> block;
    for (int count; (count = BIO_read(link.Get(), block.data(), block.size())) > 0;) {
      request.bytes.append(block.data(), static_cast<size_t>(count));
      const size_t end = request.bytes.find("\r\n\r\n");
      if (end == std::string::npos) {
        continue;
      }
      request.head = request.bytes.substr(0, end);
      std::string body = request.bytes.substr(end + 4);
      if (request.head.find("\r\nTransfer-Encoding: chunked") != std::string::npos) {
        body.erase(0, body.find("\r\n") + 2);  // in one chunk, as it is short
        body.resize(body.size() - std::min<size_t>(body.size(), 7));
      }
      request.isWhole |= UpperHex(Md5::Of(BytesOf(body))) == digest;
      if (const size_t at = request.head.find("&o="); at != std::string::npos) {
        digest = request.head.substr(at + 3, 32);
      }
      if (until == kHead || (until == kBody && request.isWhole)) {
        return;
      }
    }
  }

  void Send(const HostileAnswer& answer) {
    std::string_view rest = answer.bytes;
    for (int i = 0; !rest.empty(); ++i) {
      const auto piece = rest.substr(0, answer.piece > 0 && i < 1000 ? answer.piece : rest.size());
      if (!Write(piece)) {
        return;
      }
      rest.remove_prefix(piece.size());
    }
    pollfd leaving{.fd = socket, .events = POLLRDHUP, .revents = 0};
    for (size_t sent = 0; !answer.again.empty() && Write(answer.again);) {
      sent += answer.again.size();
      if (answer.isPatient ? poll(&leaving, 1, 1000) != 0 : sent >= (size_t{64} << 20)) {
        return;
      }
    }
  }

  // True when what the client still says is to be read, else the system answers it with a reset.
  bool End(const HostileAnswer& answer) {
    const linger none{.l_onoff = answer.isReset ? 1 : 0, .l_linger = 0};
    setsockopt(socket, SOL_SOCKET, SO_LINGER, &none, sizeof none);
    if (answer.hasNotice && !answer.isReset && tls != nullptr) {
      SSL_set_quiet_shutdown(tls, 0);
      SSL_shutdown(tls);
    }
    return !answer.isReset && shutdown(socket, SHUT_WR) == 0;
  }

 private:
  bool Write(std::string_view bytes) {
    const auto size = static_cast<int>(bytes.size());
    return BIO_write(link.Get(), bytes.data(), size) == size;
  }

  ClosedBy<BIO*, &BIO_free_all> link;
  const int socket;
  SSL* tls = nullptr;  // a part of the link
};

// An HTTPS and HTTP server on two ports of 127.0.0.1, of which the first is the built-in one. It
// takes one connection after the other; that of the number `connection`, from 0, gets `hostile`,
// and all others what `good` says to the request's head.
class HostileServer {
 public:
  static constexpr const char* kAddresses[] = {"127.0.0.1:18443", "127.0.0.1:18444"};
  using Good = std::function<std::string(const std::string& head)>;

  HostileServer(size_t connection, const HostileAnswer& hostile, const Good& good)
      : ports{Listen(kAddresses[0]), Listen(kAddresses[1])},
        thread([=, this](const std::stop_token& stop) {
          for (bool isIdle = false; !isIdle || !stop.stop_requested();) {
            isIdle = true;
            for (BIO* const port : ports) {
              pollfd waiting{.fd = static_cast<int>(BIO_get_fd(port, nullptr)), .events = POLLIN};
              if (poll(&waiting, 1, 5) == 1 && BIO_do_accept(port) == 1) {
                const bool isHostile = requests.size() == connection;
                Talk(BIO_pop(port), isHostile ? hostile : HostileAnswer(),
                     isHostile ? Good() : good);
                isIdle = false;
              }
            }
          }
        }) {}

  // What came, a request a connection, also of those that still wait.
  const std::vector<HostileRequest>& Stop() {
    thread.request_stop();
    thread.join();
    std::ranges::for_each(ports, BIO_free_all);
    return requests;
  }

 private:
  static BIO* Listen(const char* address) {
    BIO* const listener = BIO_new_accept(address);
    BIO_set_bind_mode(listener, BIO_BIND_REUSEADDR);
    EXPECT_EQ(BIO_do_accept(listener), 1) << address;
    fcntl(static_cast<int>(BIO_get_fd(listener, nullptr)), F_SETFD, FD_CLOEXEC);
    return listener;
  }

  static SSL_CTX* Context() {
    static const Certificate identity = MakeLoopbackCertificate();
    static const ClosedBy<SSL_CTX*, &SSL_CTX_free> context(SSL_CTX_new(TLS_server_method()));
    SSL_CTX_use_certificate(context.Get(), identity.certificate.Get());
    SSL_CTX_use_PrivateKey(context.Get(), identity.key.Get());
    return context.Get();
  }

  void Talk(BIO* accepted, HostileAnswer answer, const Good& good) {
    HostileRequest& request = requests.emplace_back();
    HostilePeer peer(accepted);
    if (!answer.isPlain) {
      peer.Accept(Context(), answer.handshakeSteps);
      peer.Receive(request, HostilePeer::kHead, digest);
    }
    if (!answer.isEarly && request.head.starts_with("PUT ")) {
      peer.Send({.bytes = "HTTP/1.1 100 Continue\r\n\r\n"});  // the client would wait for a second
      peer.Receive(request, HostilePeer::kBody, digest);
    }
    answer.bytes = good ? good(request.head) : answer.bytes;
    peer.Send(answer);
    if (peer.End(answer)) {
      peer.Receive(request, HostilePeer::kEnd, digest);
    }
  }

  std::vector<HostileRequest> requests;
  std::string digest;  // of the last ticket request
  std::array<BIO*, 2> ports;
  std::jthread thread;
};

}  // namespace ostrell
