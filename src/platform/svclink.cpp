#include "platform/svclink.h"

namespace ostrell {
namespace {

constexpr int32_t kSignatureFile = 0;
constexpr int32_t kStream = 1;
constexpr uint32_t kSignatureFileFlags = 0x8000;
constexpr uint32_t kStreamFlags = 258;

}  // namespace

SvclinkObjectOwner Svclink::OpenSignatureFile(const char* path) const {
  return Open(kSignatureFile, path, kSignatureFileFlags);
}

SvclinkObjectOwner Svclink::OpenStream() const {
  return Open(kStream, "", kStreamFlags);
}

SvclinkObjectOwner Svclink::Open(int32_t kind, const char* path, uint32_t flags) const {
  if (entries.createObject == nullptr) {
    return {};
  }
  SvclinkObjectOwner object(entries.createObject(kind));
  if (!object || object->open == nullptr || object->open(object.Get(), path, flags) < 0) {
    return {};
  }
  return object;
}

uint32_t Svclink::KindOf(SvclinkObject* object) const {
  uint32_t kind = 0;
  const bool holds =
      entries.queryKind != nullptr && (entries.queryKind(object, &kind, 1) & 0xFF) == 1;
  return holds ? kind : 0;
}

SvclinkRecordOwner Svclink::TakeRecord(SvclinkObject* object) const {
  SvclinkRecord* record = nullptr;
  if (entries.takeRecord == nullptr || entries.takeRecord(object, &record, 0) < 0) {
    return {};
  }
  return SvclinkRecordOwner(record);
}

}  // namespace ostrell
