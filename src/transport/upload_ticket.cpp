#include "transport/upload_ticket.h"

#include <string_view>
#include <utility>

#include "base/json.h"
#include "transport/http.h"

namespace ostrell {
namespace {

// Load callback of jansson: 0 ends the text.
size_t ReadChain(void* to, size_t count, void* chain) noexcept {
  return static_cast<ByteChain*>(chain)->Read({static_cast<std::byte*>(to), count});
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
  const JsonOwner reply(json_load_callback(ReadChain, &answer, 0, nullptr));
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
