#include "devkit/report_server/faults.h"

#include <algorithm>
#include <array>

namespace ostrell {
namespace {

constexpr std::array kFaults{
    FaultEntry{Fault::kStatus404, "status-404", "good answer under status 404"},
    FaultEntry{Fault::kStatus500, "status-500", "good answer under status 500"},
    FaultEntry{Fault::kGarbage, "garbage", "64 bytes that are neither JSON nor a record"},
    FaultEntry{Fault::kNoUrl, "no-url", "ticket without \"url\""},
    FaultEntry{Fault::kNoHeader, "no-header", "ticket without \"header\""},
    FaultEntry{Fault::kEmptyHeader, "empty-header", "ticket with \"header\": []"},
    FaultEntry{Fault::kHeaderObject, "header-object", "ticket with \"header\": {}"},
    FaultEntry{Fault::kHeaderNumber, "header-number", "ticket with \"header\": [7]"},
    FaultEntry{Fault::kHeaderCrlf, "header-crlf", "ticket with CR LF inside a header line"},
    FaultEntry{Fault::kFtpUrl, "ftp-url", "ticket to an ftp: address"},
    FaultEntry{Fault::kFileUrl, "file-url", "ticket to a file: address"},
    FaultEntry{Fault::kBareUrl, "bare-url", "ticket to an address without a scheme"},
    FaultEntry{Fault::kCut, "cut", "good answer, cut before its promised length"},
    FaultEntry{Fault::kSlow, "slow", "status and headers, then nothing for up to 30 s"},
    FaultEntry{Fault::kEndless, "endless", "good answer that never ends (64 MiB at most)"},
    FaultEntry{Fault::kBig, "big", "good answer of 5 MiB"},
    FaultEntry{Fault::kRedirect, "redirect", "302 to the same path without the fault"},
    FaultEntry{Fault::kNotJson, "not-json", "rc1: sound record, text is no JSON"},
    FaultEntry{Fault::kBadSize, "bad-size", "rc1: size word points past the block"},
    FaultEntry{Fault::kBadExtension, "bad-extension", "rc1: extension reaches past the block"},
    FaultEntry{Fault::kShort, "short", "rc1: the first 9 bytes of a record"},
    FaultEntry{Fault::kPut404, "put-404", "PUT answered with status 404"},
    FaultEntry{Fault::kPut500, "put-500", "PUT answered with status 500"},
    FaultEntry{Fault::kPut302, "put-302", "PUT answered with 302 and a Location"},
    FaultEntry{Fault::kPutCut, "put-cut", "answer to the PUT cut before its promised length"},
    FaultEntry{Fault::kPutEndless, "put-endless", "answer to the PUT never ends (64 MiB at most)"},
};

}  // namespace

std::span<const FaultEntry> AllFaults() {
  return kFaults;
}

std::optional<Fault> FaultNamed(std::string_view name) {
  const auto* const found =
      std::ranges::find(kFaults, name, [](const FaultEntry& entry) { return entry.name; });
  if (found == kFaults.end()) {
    return std::nullopt;
  }
  return found->fault;
}

std::string_view NameOf(Fault fault) {
  return kFaults[static_cast<size_t>(fault)].name;
}

bool ActiveFaults::Acts(Fault fault) {
  const auto [found, isFirst] = decided.try_emplace(fault, false);
  if (isFirst && isOn(fault)) {
    found->second = true;
    acted += acted.empty() ? "" : ",";
    acted += NameOf(fault);
  }
  return found->second;
}

}  // namespace ostrell
