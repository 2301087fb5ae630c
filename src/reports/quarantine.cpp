#include "reports/quarantine.h"

#include <algorithm>
#include <array>

#include "base/wildcard.h"
#include "reports/detection_kinds.h"

namespace ostrell {

std::optional<QuarantineInstructions> ReadQuarantineInstructions(const json_t* answer) {
  const json_t* const wishes = json_object_get(json_object_get(answer, "samples"), "quarantine");
  const auto mostFiles = IntegerMember(wishes, "cnt");
  return mostFiles
             ? std::optional(QuarantineInstructions{*mostFiles, json_object_get(wishes, "vnflt")})
             : std::nullopt;
}

std::optional<QuarantineEntry> ReadQuarantineEntry(const json_t* entry) {
  const auto id = Integer64Member(entry, "id");
  const auto fid = IntegerMember(entry, "fid");
  const auto sha1 = TextMember(entry, "sha1");
  const auto path = TextMember(entry, "fn");
  const auto name = TextMember(entry, "vn");
  const auto time = Integer64Member(entry, "ts");
  return id && fid && sha1 && path && name && time
             ? std::optional(QuarantineEntry{*id, KindOf(*fid), *sha1, *path, *name, *time})
             : std::nullopt;
}

bool IsWanted(const QuarantineEntry& entry, const QuarantineInstructions& instructions) {
  constexpr std::array<uint32_t, 4> kKinds = {1, 3, 4, 46};
  return std::find(kKinds.begin(), kKinds.end(), entry.kind) != kKinds.end() &&
         !MatchesAnyPattern(entry.name, instructions.barred);
}

bool MatchesAnyPattern(std::string_view text, const json_t* patterns) {
  size_t index = 0;
  json_t* pattern = nullptr;
  json_array_foreach(patterns, index, pattern) {
    if (json_string_length(pattern) > 0 &&
        MatchesWildcard(text, {json_string_value(pattern), json_string_length(pattern)})) {
      return true;
    }
  }
  return false;
}

int32_t RunQuarantinePass(const JsonOwner& entries, int64_t from,
                          const QuarantineInstructions& instructions, const SendHeldFile& send,
                          const SampleClock& clock) {
  const SampleTimeBudget budget(clock);
  int32_t sent = 0;
  size_t index = 0;
  json_t* element = nullptr;
  json_array_foreach(entries.Get(), index, element) {
    const auto entry = ReadQuarantineEntry(element);
    if (!entry || entry->time < from) {
      continue;
    }
    if (sent >= instructions.mostFiles) {
      return 1;
    }
    if (budget.IsSpent()) {
      return 0;
    }
    if (IsWanted(*entry, instructions) && send(*entry)) {
      ++sent;
    }
  }
  return 1;
}

}  // namespace ostrell
