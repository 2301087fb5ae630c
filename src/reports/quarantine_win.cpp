#include <optional>
#include <utility>

#include "base/byte_buffer.h"
#include "env/report_clock.h"
#include "platform/policydb.h"
#include "platform/svclink.h"
#include "reports/quarantine.h"
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

std::optional<ByteBuffer> Restore(Quarantine& quarantine, int64_t id) {
  const SvclinkObjectOwner stream = Svclink::Loaded().OpenStream();
  if (!stream || !assumed::IsRestored(quarantine.Restore(id, stream.Get()))) {
    return std::nullopt;
  }
  return ReadSample(*stream.Get());
}

// Asks for the entry and sends its file; false when it was not sent.
bool SendEntry(Quarantine& quarantine, const QuarantineEntry& entry) {
  int32_t known = 0;
  if (AskSampleKnown(entry.sha1.data(), known, entry.path, SampleSource::kQuarantine) == 0 ||
      known == 1) {
    return false;
  }
  const auto file = Restore(quarantine, entry.id);
  return file && SendSample(entry.sha1.data(), *file) == 1;
}

}  // namespace

int32_t QuarantineJob(int64_t from, const json_t* instructions) {
  const QuarantineOwner quarantine = OpenQuarantine();
  const JsonOwner list(quarantine ? quarantine->List() : nullptr);
  const auto wishes = ReadQuarantineInstructions(instructions);
  if (!list || !wishes) {
    return 0;
  }
  const auto send = [&](const QuarantineEntry& entry) {
    return SendEntry(*quarantine.Get(), entry);
  };
  return RunQuarantinePass(list, from, *wishes, send, ReportClock);
}

}  // namespace ostrell
