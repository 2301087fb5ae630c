#include <algorithm>
#include <optional>
#include <string>

#include "base/bytes.h"
#include "base/json.h"
#include "base/text.h"
#include "fuzz/fuzz_target.h"
#include "transport/upload_ticket.h"

namespace ostrell {
namespace {

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

// The lines of a sound header.
std::optional<std::vector<std::string>> PlainLines(const json_t* header) {
  std::vector<std::string> lines;
  for (const json_t* const line : Elements(header)) {
    lines.emplace_back(json_is_string(line) ? json_string_value(line) : "\n",
                       json_is_string(line) ? json_string_length(line) : 1);
  }
  const bool isSound = header != nullptr && std::ranges::none_of(lines, [](const auto& line) {
                         return line.find_first_of("\r\n\0"sv) != line.npos;
                       });
  return isSound ? std::optional(lines) : std::nullopt;
}

// The object with another member in front, an array of so many elements.
std::string WithElements(std::string_view object, size_t elements) {
  std::string member = R"("n":[0)";
  for (size_t i = 1; i < elements; ++i) {
    member += ",0";
  }
  return std::string(object).insert(object.find('{') + 1, member + "],");
}

void CheckTicket(const UploadTicket& ticket, std::string_view answer) {
  const auto again = Read(WithElements(answer, 1));
  Require(answer.size() + 2 > kMaxTicketElements ||
          (again && again->url == ticket.url && again->headerLines == ticket.headerLines));
  Require(!Read(WithElements(answer, kMaxTicketElements)));
}

}  // namespace

void CheckInput(std::string_view input) {
  const JsonOwner document(json_loadb(input.data(), input.size(), 0, nullptr));
  const auto url = TextMember(document.Get(), "url");
  const auto lines = PlainLines(json_object_get(document.Get(), "header"));
  const auto ticket = Read(input);
  if (ticket) {
    Require(url == ticket->url && MayBeHttp(*url) && lines == ticket->headerLines);
    CheckTicket(*ticket, input);
  } else {
    Require(!url || !IsPlainHttp(*url) || !lines || input.size() > kMaxTicketElements);
  }
}

}  // namespace ostrell
