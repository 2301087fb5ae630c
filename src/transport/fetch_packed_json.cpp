#include "transport/fetch_packed_json.h"

#include <cstddef>
#include <span>

#include "base/bounded_json.h"
#include "transport/http.h"
#include "transport/packed_record.h"

namespace ostrell {
namespace {

constexpr uint32_t kPackedRecordKind = 0x20FFFF;

// False when the stream does not take the whole block.
bool WriteToStream(SvclinkObject* stream, std::span<const std::byte> block) {
  return stream->write != nullptr &&
         stream->write(stream, block.data(), static_cast<uint32_t>(block.size())) ==
             static_cast<int64_t>(block.size());
}

JsonOwner DecodeStream(SvclinkObject* stream, const Svclink& svclink) {
  if (svclink.KindOf(stream) != kPackedRecordKind) {
    return {};
  }
  const SvclinkRecordOwner record = svclink.TakeRecord(stream);
  if (!record || record->data == nullptr) {
    return {};
  }
  uint32_t size = 0;
  const std::byte* const block = record->data(record.Get(), &size);
  const auto text = block != nullptr ? PackedRecordJson({block, size}) : std::nullopt;
  return text ? ParseJson(*text) : JsonOwner();
}

}  // namespace

JsonOwner FetchPackedJson(const char* url, int32_t* statusOut, const Svclink& svclink) {
  const SvclinkObjectOwner stream = svclink.OpenStream();
  if (!stream) {
    return {};
  }
  uint64_t received = 0;
  const BodySink writeToStream = [&](std::span<const std::byte> block) {
    received += block.size();
    return received <= kMaxAnswerBytes && WriteToStream(stream.Get(), block);
  };
  if (!HttpGet(url, writeToStream, statusOut)) {
    return {};
  }
  return DecodeStream(stream.Get(), svclink);
}

}  // namespace ostrell
