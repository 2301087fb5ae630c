#include "reports/quarantine.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/byte_buffer.h"
#include "base/wildcard.h"
#include "reports/detection_kinds.h"
#include "reports/sample_upload.h"

namespace ostrell {
namespace {

// What a stream holds, from its beginning; nothing when it is no sample's size or is cut.
std::optional<ByteBuffer> ReadSample(SvclinkObject& stream) {
  const int64_t size = stream.size != nullptr ? stream.size(&stream) : -1;
  if (size < 0 || !IsSampleSize(static_cast<uint64_t>(size)) || stream.read == nullptr) {
    return std::nullopt;
  }
  auto sample = AllocateBytes(static_cast<size_t>(size));
  const bool isRead =
      sample && stream.read(&stream, 0, sample->data(), static_cast<uint32_t>(size)) == size;
  return isRead ? std::move(sample) : std::nullopt;
}

std::optional<ByteBuffer> Restore(const Run& run, Quarantine& quarantine, int64_t id) {
  const SvclinkObjectOwner stream = run.svclink.OpenStream();
  if (!stream || !assumed::IsYes(quarantine.Restore(id, stream.Get()))) {
    return std::nullopt;
  }
  return ReadSample(*stream.Get());
}

// Asks for the entry and sends its file; false when it was not sent.
bool SendEntry(const Run& run, Quarantine& quarantine, const QuarantineEntry& entry) {
  if (AskSampleKnown(run, entry.sha1, entry.path, SampleSource::kQuarantine) !=
      SampleAnswer::kUnknown) {
    return false;
  }
  const auto file = Restore(run, quarantine, entry.id);
  return file && SendSample(run, entry.sha1, *file);
}

}  // namespace

std::optional<QuarantineInstructions> ReadQuarantineInstructions(const json_t* answer) {
  const json_t* const wishes = json_object_get(json_object_get(answer, "samples"), "quarantine");
  const auto maxFiles = IntegerMember(wishes, "cnt");
  return maxFiles
             ? std::optional(QuarantineInstructions{*maxFiles, json_object_get(wishes, "vnflt")})
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
  for (const json_t* const pattern : Elements(patterns)) {
    if (json_string_length(pattern) > 0 &&
        MatchesWildcard(text, {json_string_value(pattern), json_string_length(pattern)})) {
      return true;
    }
  }
  return false;
}

int32_t RunQuarantinePass(const JsonOwner& entries, int64_t from,
                          const QuarantineInstructions& instructions, const SendHeldFile& send,
                          const Clock& clock) {
  const SampleTimeBudget budget(clock);
  int32_t sent = 0;
  for (const json_t* const element : Elements(entries.Get())) {
    const auto entry = ReadQuarantineEntry(element);
    if (!entry || entry->time < from) {
      continue;
    }
    if (sent >= instructions.maxFiles) {
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

int32_t QuarantineJob(const Run& run, int64_t from, const json_t* instructions) {
  const QuarantineOwner quarantine = run.policydb.OpenQuarantine();
  const JsonOwner list(quarantine ? quarantine->List() : nullptr);
  const auto wishes = ReadQuarantineInstructions(instructions);
  if (!list || !wishes) {
    return 0;
  }
  const auto send = [&](const QuarantineEntry& entry) {
    return SendEntry(run, *quarantine.Get(), entry);
  };
  return RunQuarantinePass(list, from, *wishes, send, run.clock);
}

}  // namespace ostrell
