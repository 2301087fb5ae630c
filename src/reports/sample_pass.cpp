#include "reports/sample_pass.h"

#include <algorithm>
#include <string>

#include "base/bytes.h"
#include "base/calendar.h"
#include "base/murmur.h"
#include "base/text.h"

namespace ostrell {

uint64_t PathKey(std::string_view path) {
  constexpr uint64_t kSeed = 0x19870714;
  std::string lower(path);
  std::transform(lower.begin(), lower.end(), lower.begin(), LowerAscii<char>);
  return MurmurHash64B(BytesOf(lower), kSeed);
}

std::optional<std::string_view> SubmittedSamplePath(const json_t* record) {
  if (const auto path = TextMember(json_object_get(record, "detail"), "pathname")) {
    return path;
  }
  return TextMember(json_object_get(json_object_get(record, "processes"), "master"), "pathname");
}

std::optional<std::string_view> NetworkProgramPath(const json_t* record) {
  const auto path = TextMember(json_object_get(record, "detail"), "procname");
  return path && !EqualsIgnoringCase(*path, "system") && !EqualsIgnoringCase(*path, "idle")
             ? path
             : std::nullopt;
}

std::optional<std::string_view> FalsePositivePath(const json_t* record) {
  const json_t* const detail = json_object_get(record, "detail");
  const auto name = TextMember(detail, "recname");
  const bool isWanted = IntegerMember(detail, "solid") == 0 &&
                        IntegerMember(detail, "result") == 0 && name &&
                        StartsWithIgnoringCase(*name, "Virus/");
  return isWanted ? TextMember(detail, "pathname") : std::nullopt;
}

SampleTimeBudget::SampleTimeBudget(const Clock& source) : clock(source), began(clock.Now()) {}

bool SampleTimeBudget::IsSpent() const {
  return WrappingDifference(clock.Now(), began) > kSampleTimeBudget;
}

void RunSamplePass(const JsonOwner& records, PathOfRecord* pathOf, PathKeys& handled,
                   const std::function<void(std::string_view path)>& submit, const Clock& clock) {
  const SampleTimeBudget budget(clock);
  for (const json_t* const record : Elements(records.Get())) {
    if (budget.IsSpent()) {
      return;
    }
    const auto path = pathOf(record);
    if (path && handled.Add(PathKey(*path), false)) {
      submit(*path);
    }
  }
}

}  // namespace ostrell
