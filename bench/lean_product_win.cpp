// The product's libraries as lean as can be, so that a run under the clock is the agent's own work
// and not that of the stand-ins of devkit/product, which read files at every call. They answer as
// if every report but the first had been sent just now, open nothing and log nothing; a stream
// keeps the server's answer.
//
// One source for all four: each library exports what its definition file names.
#include <windows.h>

#include <cstring>
#include <ctime>

#include "platform/policydb.h"
#include "platform/svclink.h"

namespace ostrell {
namespace {

struct LeanSettings final : SettingsStore {
  void Release() override {}
  int32_t ReadInt32(const char*, int32_t*) override { return 0; }
  int32_t ReadInt64(const char* key, int64_t* value) override {
    if (std::strncmp(key, "rpttm_", 6) != 0 || std::strcmp(key, "rpttm_ui") == 0) {
      return 0;
    }
    *value = std::time(nullptr);
    return 1;
  }
  void Reserved3() override {}
  void Reserved4() override {}
  int32_t WriteInt64(const char*, int64_t) override { return 1; }
};

struct Stream : SvclinkObject {
  uint32_t used;
  std::byte content[65536];
};

// There is one of each.
LeanSettings settings;
Stream stream;
SvclinkRecord streamRecord;

void ReleaseObject(SvclinkObject*) {}
void ReleaseRecord(SvclinkRecord*) {}

int32_t Write(SvclinkObject*, const void* from, uint32_t count) {
  if (count > sizeof(stream.content) - stream.used) {
    return -1;
  }
  std::memcpy(stream.content + stream.used, from, count);
  stream.used += count;
  return static_cast<int32_t>(count);
}

int32_t Open(SvclinkObject*, const char*, uint32_t) {
  return 0;
}

const std::byte* Data(SvclinkRecord*, uint32_t* size) {
  *size = stream.used;
  return stream.content;
}

}  // namespace

extern "C" int32_t InstallCrashSentry(int32_t) {
  return 0;
}

extern "C" void TraceLogWrite(const char*, int32_t, int32_t, const wchar_t*) {}

extern "C" PolicyDocument* OpenDocument(int32_t, const char*) {
  return nullptr;
}

extern "C" Quarantine* OpenQuarantineFolder() {
  return nullptr;
}

extern "C" SettingsStore* OpenSettings(const char*) {
  return &settings;
}

extern "C" int32_t QueryKind(SvclinkObject*, uint32_t* kind, int32_t) {
  std::memcpy(kind, stream.content + 4, sizeof(*kind));
  return 1;
}

extern "C" SvclinkObject* CreateObject(int32_t kind) {
  constexpr int32_t kStream = 1;
  stream.release = ReleaseObject;
  stream.write = Write;
  stream.open = Open;
  stream.used = 0;
  return kind == kStream ? &stream : nullptr;
}

extern "C" int32_t TakeRecord(SvclinkObject*, SvclinkRecord** record, int32_t) {
  streamRecord.release = ReleaseRecord;
  streamRecord.data = Data;
  *record = &streamRecord;
  return 0;
}

}  // namespace ostrell
