#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

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

// Nothing for a name that is not in the table.
std::optional<Fault> FaultNamed(std::string_view name);

// The faults that are switched on for one request, and which of them acted.
class ActiveFaults {
 public:
  explicit ActiveFaults(std::vector<Fault> switchedOn) : on(std::move(switchedOn)) {}

  // True when `fault` is switched on; the caller then does what it says.
  bool Acts(Fault fault);

  // The names of those that acted, separated by commas; empty when none did.
  std::string Acted() const { return acted; }

 private:
  std::vector<Fault> on;
  std::string acted;
};

}  // namespace ostrell
