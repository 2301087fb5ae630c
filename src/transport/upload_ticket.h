#pragma once

#include <optional>
#include <string>
#include <vector>

#include "transport/byte_chain.h"

namespace ostrell {

// The most elements (bounded_json.h) of a ticket: some lines are what a server sends.
inline constexpr size_t kMaxTicketElements = 16384;

// Where the report server wants a packed body, and the header lines that it wants with it.
struct UploadTicket {
  std::string url;
  std::vector<std::string> headerLines;
};

// Reads the server's answer, which is used up: a JSON object with "url", text that names http or
// https, and "header", whose elements, when it is an array, are complete header lines: text without
// CR, LF or NUL. A "header" of another kind holds no lines; other members are ignored. Nothing for
// any other answer, and for one of more than kMaxTicketElements. Throws std::bad_alloc only.
std::optional<UploadTicket> ReadUploadTicket(ByteChain& answer);

}  // namespace ostrell
