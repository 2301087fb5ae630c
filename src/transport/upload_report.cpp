#include "transport/upload_report.h"

#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include "transport/http.h"
#include "transport/pack_body.h"
#include "transport/report_url.h"
#include "transport/upload_ticket.h"

namespace ostrell {
namespace {

std::optional<UploadTicket> RequestTicket(std::string_view reportUrl, const std::string& digest) {
  const bool hasQuery = reportUrl.find('?') != std::string_view::npos;
  const auto url = ReportUrl<>::Print("%s%so=%s", reportUrl, hasQuery ? "&" : "?", digest);
  ByteChain answer(kMaxAnswerBytes);
  // The status decides nothing: whatever came back is read.
  if (GetToChain(url.CStr(), answer, nullptr) != 1) {
    return std::nullopt;
  }
  return ReadUploadTicket(answer);
}

}  // namespace

int32_t UploadReport(const char* url, const void* body, uint32_t bodyLength,
                     ByteChain* responseSink, int32_t* statusOut) {
  try {
    ByteChain packed;
    std::string digest;
    if (PackBody(packed, &digest, body, bodyLength) != 1) {
      return 0;
    }
    const auto ticket = RequestTicket(url, digest);
    return ticket && HttpPut(ticket->url.c_str(), ticket->headerLines, packed, responseSink,
                             statusOut)
               ? 1
               : 0;
  } catch (const std::exception&) {
    return 0;
  }
}

}  // namespace ostrell
