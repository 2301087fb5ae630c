#pragma once

#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace ostrell {

// What the server does wrong on request. The table behind AllFaults() says what each one means.
enum class Fault {
  kStatus404,
  kStatus500,
  kGarbage,
  kNoUrl,
  kNoHeader,
  kEmptyHeader,
  kHeaderObject,
  kHeaderNumber,
  kHeaderCrlf,
  kFtpUrl,
  kFileUrl,
  kBareUrl,
  kCut,
  kSlow,
  kEndless,
  kBig,
  kRedirect,
  kNotJson,
  kBadSize,
  kBadExtension,
  kShort,
  kPut404,
  kPut500,
  kPut302,
  kPutCut,
  kPutEndless,
};

struct FaultEntry {
  Fault fault;
  std::string_view name;
  std::string_view help;
};

// Every fault once, in the order of the enumeration.
std::span<const FaultEntry> AllFaults();

std::string_view NameOf(Fault fault);

// Nothing for a name that is not in the table.
std::optional<Fault> FaultNamed(std::string_view name);

// The faults of one request, and which of them acted.
class ActiveFaults {
 public:
  // `decides` is asked at most once for each fault that concerns the request.
  explicit ActiveFaults(std::function<bool(Fault)> decides) : isOn(std::move(decides)) {}

  // True when `fault` is to act; the caller then does what it says.
  bool Acts(Fault fault);

  // The names of those that acted, separated by commas; empty when none did.
  std::string Acted() const { return acted; }

 private:
  std::function<bool(Fault)> isOn;
  std::map<Fault, bool> decided;
  std::string acted;
};

}  // namespace ostrell
