#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "base/json.h"
#include "base/text.h"
#include "fuzz/fuzz_target.h"
#include "transport/upload_ticket.h"

namespace {

using namespace ostrell;
using namespace std::string_view_literals;

// The answer as it might arrive, in five chunks or less.
std::optional<UploadTicket> Read(std::string_view answer) {
  ByteChain chain;
  const size_t step = answer.size() / 5 + 1;
  for (size_t i = 0; i < answer.size(); i += step) {
    Require(chain.Append(BytesOf(answer.substr(i, step))));
  }
  auto ticket = ReadUploadTicket(chain);
  Require(chain.Total() == 0);
  return ticket;
}

// What any URL in a ticket looks like, and URLs of which there is no doubt.
bool MayBeHttp(std::string_view url) {
  return (StartsWithIgnoringCase(url, "http:/") || StartsWithIgnoringCase(url, "https:/")) &&
         std::ranges::none_of(url, [](char c) { return (c >= 0 && c <= ' ') || c == 0x7F; });
}
bool IsPlainHttp(std::string_view url) {
  return (url.starts_with("http://h/") || url.starts_with("https://h/")) &&
         url.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789/", 8) == url.npos;
}

bool HasSoundLines(const json_t* header) {
  for (size_t i = 0; i < json_array_size(header); ++i) {
    const json_t* const line = json_array_get(header, i);
    if (!json_is_string(line) || std::string_view(json_string_value(line), json_string_length(line))
                                         .find_first_of("\r\n\0"sv) != std::string_view::npos) {
      return false;
    }
  }
  return header != nullptr;
}

// A member of an object, with an array of so many elements.
std::string LongMember(size_t elements) {
  std::string member = R"("n":[0)";
  for (size_t i = 1; i < elements; ++i) {
    member += ",0";
  }
  return member + "],";
}

std::string WithMember(std::string_view object, const std::string& member) {
  return std::string(object).insert(object.find('{') + 1, member);
}

void CheckTicket(const UploadTicket& ticket, std::string_view answer, const json_t* header) {
  Require(MayBeHttp(ticket.url) && HasSoundLines(header));
  Require(ticket.headerLines.size() == json_array_size(header));
  for (size_t i = 0; i < ticket.headerLines.size(); ++i) {
    Require(ticket.headerLines[i] == json_string_value(json_array_get(header, i)));
  }
  const auto again = Read(WithMember(answer, LongMember(1)));
  Require(answer.size() + 2 > kMaxTicketElements ||
          (again && again->url == ticket.url && again->headerLines == ticket.headerLines));
  static const std::string kTooLong = LongMember(kMaxTicketElements);
  Require(!Read(WithMember(answer, kTooLong)));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view answer(reinterpret_cast<const char*>(data), size);
  const JsonOwner document(json_loadb(answer.data(), size, 0, nullptr));
  const auto url = TextMember(document.Get(), "url");
  const json_t* const header = json_object_get(document.Get(), "header");
  const auto ticket = Read(answer);
  if (ticket) {
    Require(url == ticket->url);
    CheckTicket(*ticket, answer, header);
  } else {
    Require(!url || !IsPlainHttp(*url) || !HasSoundLines(header) || size > kMaxTicketElements);
  }
  return 0;
}
