#pragma once

#include <zlib.h>

#include <string>

#include "devkit/report_server/report_server.h"

namespace ostrell {

inline std::string Packed(const std::string& text) {
  std::string packed(compressBound(text.size()), '\0');
  uLongf size = packed.size();
  compress(reinterpret_cast<Bytef*>(packed.data()), &size,
           reinterpret_cast<const Bytef*>(text.data()), text.size());
  return packed.substr(0, size);
}

// Puts an upload into the server's memory, as if it had come in with a ticket.
struct KeptUpload {
  std::string report;
  std::string packed;
  QueryValues query{};
  uint64_t ticket = ++newestTicket;

  void AddTo(ReportServer& server) const {
    const HttpRequest request{
        .method = "PUT", .target = "/put/1", .headers = {{"Host", "h"}}, .body = packed};
    const bool isJson = report != "rc3" && report != "rc4";
    server.Log().Add({.request = request,
                      .report = report,
                      .query = query,
                      .status = 200,
                      .ticket = ticket,
                      .body = CheckPackedBody(packed, {.digest = "", .isJson = isJson})});
  }

 private:
  static inline uint64_t newestTicket = 0;
};

}  // namespace ostrell
