#pragma once

#include <memory>
#include <string>

#include "devkit/report_server/report_server.h"

namespace ostrell {

// The page of a report server, and the calls behind it: plain HTTP on loopback, on threads of its
// own. docs/report-viewer.md lists the calls. All that was received is foreign: JSON values go out
// as data, bodies as attachments that no browser shows, and the page's own scripts are the only
// ones that may run. A request is refused with 403 unless its Host is "127.0.0.1:PORT" or
// "localhost:PORT" and its Sec-Fetch-Site, where there is one, "none" or "same-origin"; a change is
// made only by a request whose Content-Type is application/json.
class Viewer {
 public:
  // `shown` has to outlive it.
  explicit Viewer(ReportServer& shown);
  ~Viewer();
  Viewer(const Viewer&) = delete;
  Viewer(Viewer&&) = delete;
  Viewer& operator=(const Viewer&) = delete;
  Viewer& operator=(Viewer&&) = delete;

  // Port 0 takes a free one. False, with one line of text in `why`, when it is taken or the data
  // inventory, which is embedded, cannot be read.
  bool Start(int port, std::string* why);
  // Waits for the requests under way; the server should have been stopped before.
  void Stop();

  // "http://127.0.0.1:PORT"; empty before Start.
  std::string Url() const;

 private:
  struct Server;

  ReportServer& reports;
  std::unique_ptr<Server> server;  // from Start on
};

}  // namespace ostrell
