#include "devkit/report_server/request_target.h"

#include <algorithm>

#include "base/hex.h"

namespace ostrell {
namespace {

std::string DecodeValue(std::string_view text) {
  std::string decoded;
  for (size_t i = 0; i < text.size(); ++i) {
    const int high = text[i] == '%' && i + 2 < text.size() ? HexDigitValue(text[i + 1]) : -1;
    const int low = high >= 0 ? HexDigitValue(text[i + 2]) : -1;
    if (low >= 0) {
      decoded += static_cast<char>(high * 16 + low);
      i += 2;
    } else {
      decoded += text[i] == '+' ? ' ' : text[i];
    }
  }
  return decoded;
}

// The text up to `separator`, which is dropped from `rest` together with it.
std::string_view TakeUntil(std::string_view& rest, char separator) {
  const std::string_view taken = rest.substr(0, rest.find(separator));
  rest.remove_prefix(std::min(taken.size() + 1, rest.size()));
  return taken;
}

}  // namespace

std::optional<std::string_view> RequestTarget::Value(std::string_view name) const {
  const auto found = std::ranges::find(
      query, name, [](const auto& pair) -> std::string_view { return pair.first; });
  if (found == query.end()) {
    return std::nullopt;
  }
  return found->second;
}

QueryValues DecodeQuery(std::string_view query) {
  QueryValues values;
  while (!query.empty()) {
    std::string_view value = TakeUntil(query, '&');
    const std::string_view name = TakeUntil(value, '=');
    if (!name.empty()) {
      values.emplace_back(DecodeValue(name), DecodeValue(value));
    }
  }
  return values;
}

RequestTarget ParseRequestTarget(std::string_view target) {
  constexpr std::string_view kFault = "/fault/";
  RequestTarget parsed;
  if (target.starts_with(kFault)) {
    const size_t nameEnd = target.find_first_of("/?", kFault.size());
    parsed.faultName = target.substr(kFault.size(), nameEnd - kFault.size());
    target.remove_prefix(std::min(nameEnd, target.size()));
  }
  parsed.pathAndQuery = target;
  parsed.path = TakeUntil(target, '?');
  parsed.query = DecodeQuery(target);
  return parsed;
}

std::string ReportOfPath(std::string_view path) {
  for (const std::string_view report : {"rc1", "rc2", "rc3", "rc4", "rc5", "rc7"}) {
    if (path == "/v8/" + std::string(report) + ".php") {
      return std::string(report);
    }
  }
  return {};
}

}  // namespace ostrell
