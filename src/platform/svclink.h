#pragma once

#include <cstddef>
#include <cstdint>

#include "base/owner.h"
#include "platform/assumptions.h"

namespace ostrell {

// The product's service link library, "svclink.dll": signature files, streams and packed records.
// Its objects and records are packed to four bytes and carry their operations as function pointers
// inside. An operation's pointer may be null; the functions below then fail. Paths are UTF-8, text
// and blocks borrowed for the call. Counts and sizes are in bytes; a negative result is a failure.

#pragma pack(push, 4)

struct SvclinkObject {
  std::byte reserved[12];
  void (*release)(SvclinkObject*);  // entry 0
  // Entries 1 and 2 give the bytes that they read or wrote, which may be fewer.
  int32_t (*read)(SvclinkObject*, uint64_t offset, void* to, uint32_t count);  // entry 1
  int32_t (*write)(SvclinkObject*, const void* from, uint32_t count);          // entry 2
  int64_t (*size)(SvclinkObject*);                                             // entry 3
  void (*reservedEntries[6])();                                                // entries 4 to 9
  int32_t (*open)(SvclinkObject*, const char* path, uint32_t flags);           // entry 10
};

struct SvclinkRecord {
  std::byte reserved[12];
  void (*release)(SvclinkRecord*);
  std::byte reservedAfterRelease[4];
  uint64_t version;
  const std::byte* (*data)(SvclinkRecord*, uint32_t* size);  // the record's own; null: none
};

#pragma pack(pop)

constexpr size_t SvclinkEntryOffset(size_t entry) {
  return 12 + 8 * entry;
}
static_assert(offsetof(SvclinkObject, release) == SvclinkEntryOffset(0));
static_assert(offsetof(SvclinkObject, read) == SvclinkEntryOffset(assumed::kObjectReadEntry));
static_assert(offsetof(SvclinkObject, write) == SvclinkEntryOffset(assumed::kObjectWriteEntry));
static_assert(offsetof(SvclinkObject, size) == SvclinkEntryOffset(assumed::kObjectSizeEntry));
static_assert(offsetof(SvclinkObject, open) == 92);
static_assert(offsetof(SvclinkRecord, release) == 12);
static_assert(offsetof(SvclinkRecord, version) == 24);
static_assert(offsetof(SvclinkRecord, data) == assumed::kRecordDataOffset);

template <class Object>
struct SvclinkTraits {
  using Handle = Object*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle object) noexcept {
    if (object->release != nullptr) {
      object->release(object);
    }
  }
};
using SvclinkObjectOwner = Owner<SvclinkTraits<SvclinkObject>>;
using SvclinkRecordOwner = Owner<SvclinkTraits<SvclinkRecord>>;

// The library's exports by ordinal; a missing one is null.
struct SvclinkEntries {
  int32_t (*queryKind)(SvclinkObject*, uint32_t* kind, int32_t);    // ordinal 2
  SvclinkObject* (*createObject)(int32_t kind);                     // ordinal 10
  int32_t (*takeRecord)(SvclinkObject*, SvclinkRecord**, int32_t);  // ordinal 30
};

class Svclink {
 public:
  explicit Svclink(const SvclinkEntries& resolved) : entries(resolved) {}

  // A signature file opened for reading, and an empty memory stream. Empty on any failure.
  SvclinkObjectOwner OpenSignatureFile(const char* path) const;
  SvclinkObjectOwner OpenStream() const;

  // What an object holds decides the kind; 0 when the library does not tell.
  uint32_t KindOf(SvclinkObject* object) const;

  // The header record of a signature file or the record that a stream holds; empty on failure.
  SvclinkRecordOwner TakeRecord(SvclinkObject* object) const;

 private:
  SvclinkObjectOwner Open(int32_t kind, const char* path, uint32_t flags) const;

  SvclinkEntries entries;
};

}  // namespace ostrell
