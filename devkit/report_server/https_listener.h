#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "devkit/report_server/http_exchange.h"

namespace ostrell {

// An HTTPS server on loopback with a certificate of its own, one request a connection. Requests are
// answered by a fixed number of threads. Request line and headers are limited to 8 KiB a line, and
// a peer that neither reads nor writes for 20 s is dropped.
class HttpsListener {
 public:
  // Called from several threads at a time, once for each request, before its answer is sent.
  using Handler = std::function<HttpAnswer(const HttpRequest&)>;

  // A body of more than `maxBodyBytes` is not read to its end and refused with status 413. The
  // handler sees requests that are refused, too, with their status and what was read of the body.
  HttpsListener(Handler handler, size_t maxBodyBytes);
  ~HttpsListener();
  HttpsListener(const HttpsListener&) = delete;
  HttpsListener(HttpsListener&&) = delete;
  HttpsListener& operator=(const HttpsListener&) = delete;
  HttpsListener& operator=(HttpsListener&&) = delete;

  // Port 0 takes a free one. False, with one line of text in `why`, when the port is taken or
  // OpenSSL fails.
  bool Start(int port, std::string* why);

  // Ends answers that are under way at their next block and waits for the threads. Nothing happens
  // when the listener does not run.
  void Stop();

  // The port that is listened on; 0 before Start.
  int Port() const;

 private:
  struct Server;

  const Handler handler;
  const size_t maxBodyBytes;
  std::unique_ptr<Server> server;
};

}  // namespace ostrell
