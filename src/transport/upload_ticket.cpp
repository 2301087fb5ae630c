#include "transport/upload_ticket.h"

#include <string_view>
#include <utility>

#include "base/bounded_json.h"
#include "transport/http.h"

namespace ostrell {
namespace {

std::string TextOf(ByteChain& chain) {
  std::string text(static_cast<size_t>(chain.Total()), '\0');
  std::span<std::byte> rest = std::as_writable_bytes(std::span(text));
  while (!rest.empty()) {
    rest = rest.subspan(chain.Read(rest));
  }
  return text;
}

// A line break inside would let the server write headers, or a request, of its own.
bool IsHeaderLine(const json_t* element) {
  using namespace std::string_view_literals;
  const char* const text = json_string_value(element);
  return text != nullptr &&
         std::string_view(text, json_string_length(element)).find_first_of("\r\n\0"sv) ==
             std::string_view::npos;
}

}  // namespace

std::optional<UploadTicket> ReadUploadTicket(ByteChain& answer) {
  const JsonOwner reply = ParseJson(TextOf(answer), kMaxTicketElements);
  const char* url = nullptr;
  json_t* header = nullptr;
  if (!reply || json_unpack(reply.Get(), "{s:s,s:o}", "url", &url, "header", &header) != 0 ||
      !IsHttpUrl(url)) {
    return std::nullopt;
  }
  UploadTicket ticket{.url = url, .headerLines = {}};
  for (size_t i = 0; i < json_array_size(header); ++i) {
    const json_t* const element = json_array_get(header, i);
    if (!IsHeaderLine(element)) {
      return std::nullopt;
    }
    ticket.headerLines.emplace_back(json_string_value(element), json_string_length(element));
  }
  return ticket;
}

}  // namespace ostrell
