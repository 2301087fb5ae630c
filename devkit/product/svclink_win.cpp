// Stand-in for the product's service link library: signature files (see signature_file.h) and
// streams in memory. A stream may hold a packed record, all numbers little-endian:
//
//   0       "OPKR"
//   4       uint32 kind
//   8       uint32 size word, 12 uint8 extension length E, 14 + E the text
//
// What lies past the kind is handed out as it came; the program judges it.
// Every misuse (null, unknown kind or flags, not opened, opened twice) is a negative result.

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "base/bytes.h"
#include "base/text.h"
#include "devkit/product/files_win.h"
#include "devkit/product/guarded.h"
#include "devkit/product/signature_file.h"
#include "platform/svclink.h"

namespace ostrell {
namespace {

constexpr int32_t kFailed = -1;
constexpr int32_t kSignatureFile = 0;
constexpr int32_t kStream = 1;
constexpr uint32_t kSignatureFileFlags = 0x8000;
constexpr uint32_t kStreamFlags = 258;
constexpr size_t kStreamLimit = kFileLimit;  // bytes; a write past it takes nothing

struct Object final : SvclinkObject {
  explicit Object(int32_t objectKind);

  int32_t kind;
  bool isOpen = false;
  std::string content;
};

struct Record final : SvclinkRecord {
  Record(uint64_t recordVersion, std::string recordBlock);

  std::string block;
};

// Null unless the object is there and open.
Object* Opened(SvclinkObject* object) {
  Object* self = static_cast<Object*>(object);
  return self != nullptr && self->isOpen ? self : nullptr;
}

void ReleaseObject(SvclinkObject* object) {
  delete static_cast<Object*>(object);
}

// Reads at most to the end; an offset past it is a failure.
int32_t Read(SvclinkObject* object, uint64_t offset, void* to, uint32_t count) {
  const Object* self = Opened(object);
  if (self == nullptr || to == nullptr || offset > self->content.size()) {
    return kFailed;
  }
  const uint64_t taken = std::min<uint64_t>(count, self->content.size() - offset);
  std::memcpy(to, self->content.data() + offset, taken);
  return static_cast<int32_t>(taken);
}

int32_t Write(SvclinkObject* object, const void* from, uint32_t count) {
  return Guarded(kFailed, [&] {
    Object* self = Opened(object);
    if (self == nullptr || self->kind != kStream || (from == nullptr && count > 0) ||
        count > kStreamLimit - self->content.size()) {
      return kFailed;
    }
    self->content.append(static_cast<const char*>(from), count);
    return static_cast<int32_t>(count);
  });
}

int64_t Size(SvclinkObject* object) {
  const Object* self = Opened(object);
  return self != nullptr ? static_cast<int64_t>(self->content.size()) : kFailed;
}

bool OpenFile(Object& self, const char* path) {
  const auto widePath = WideFromUtf8(path);
  if (!widePath) {
    return false;
  }
  FileContent file = ReadWholeFile(*widePath);
  self.content = std::move(file.text);
  return file.error == ERROR_SUCCESS;
}

// A stream has no name.
bool OpenMemory(const char* path) {
  return *path == '\0';
}

int32_t Open(SvclinkObject* object, const char* path, uint32_t flags) {
  return Guarded(kFailed, [&] {
    Object* self = static_cast<Object*>(object);
    if (self == nullptr || self->isOpen || path == nullptr) {
      return kFailed;
    }
    self->isOpen = self->kind == kStream ? flags == kStreamFlags && OpenMemory(path)
                                         : flags == kSignatureFileFlags && OpenFile(*self, path);
    return self->isOpen ? 0 : kFailed;
  });
}

Object::Object(int32_t objectKind) : SvclinkObject{}, kind(objectKind) {
  release = ReleaseObject;
  read = Read;
  write = Write;
  size = Size;
  open = Open;
}

void ReleaseRecord(SvclinkRecord* record) {
  delete static_cast<Record*>(record);
}

// The block of a stream's record; a signature file's header has none.
const std::byte* Data(SvclinkRecord* record, uint32_t* size) {
  const Record* self = static_cast<const Record*>(record);
  if (self == nullptr || size == nullptr) {
    return nullptr;
  }
  *size = static_cast<uint32_t>(self->block.size());
  return self->block.empty() ? nullptr : BytesOf(self->block).data();
}

Record::Record(uint64_t recordVersion, std::string recordBlock)
    : SvclinkRecord{}, block(std::move(recordBlock)) {
  release = ReleaseRecord;
  version = recordVersion;
  data = Data;
}

// The kind of the packed record that an open stream holds.
std::optional<uint32_t> PackedKind(const Object* stream) {
  if (stream == nullptr || stream->kind != kStream || !stream->content.starts_with("OPKR")) {
    return std::nullopt;
  }
  return ReadLittleEndian<uint32_t>(BytesOf(stream->content), 4);
}

// Null when the object holds no record.
SvclinkRecord* NewRecord(const Object* object) {
  if (PackedKind(object)) {
    return new Record(0, object->content);
  }
  if (object == nullptr || object->kind != kSignatureFile) {
    return nullptr;
  }
  const auto version = SignatureFileVersion(object->content);
  return version ? new Record(*version, {}) : nullptr;
}

}  // namespace

extern "C" int32_t QueryKind(SvclinkObject* object, uint32_t* kind, int32_t mode) {
  const auto packed = PackedKind(Opened(object));
  if (!packed || kind == nullptr || mode != 1) {
    return 0;
  }
  *kind = *packed;
  return 1;
}

extern "C" SvclinkObject* CreateObject(int32_t kind) {
  return Guarded<SvclinkObject*>(nullptr, [&]() -> SvclinkObject* {
    return kind == kSignatureFile || kind == kStream ? new Object(kind) : nullptr;
  });
}

extern "C" int32_t TakeRecord(SvclinkObject* object, SvclinkRecord** record, int32_t mode) {
  return Guarded(kFailed, [&] {
    if (record == nullptr || mode != 0) {
      return kFailed;
    }
    *record = NewRecord(Opened(object));
    return *record != nullptr ? 0 : kFailed;
  });
}

static_assert(std::is_same_v<decltype(&QueryKind), decltype(SvclinkEntries::queryKind)>);
static_assert(std::is_same_v<decltype(&CreateObject), decltype(SvclinkEntries::createObject)>);
static_assert(std::is_same_v<decltype(&TakeRecord), decltype(SvclinkEntries::takeRecord)>);

}  // namespace ostrell
