#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "platform/svclink.h"

namespace ostrell {

// A service link library in memory: streams that keep what is written to them, and signature files
// of a version each. Counts what it gave out; one at a time.
class FakeSvclink {
 public:
  FakeSvclink() { current = this; }
  ~FakeSvclink() { current = nullptr; }
  FakeSvclink(const FakeSvclink&) = delete;
  FakeSvclink& operator=(const FakeSvclink&) = delete;

  std::map<std::string, uint64_t> versions;  // of signature files, by path
  std::vector<std::string> opened;           // paths of signature files, in their order
  int live = 0;                              // objects and records not yet released

  // What fails.
  bool createsNothing = false;
  bool hasNoOpen = false;
  bool hasNoRead = false;
  bool hasNoWrite = false;
  bool hasNoSize = false;
  bool hasNoData = false;
  bool dataIsNull = false;
  bool takesNothing = false;  // take-record says yes and gives nothing
  int32_t openResult = 0;
  int32_t queryResult = 1;
  int32_t takeResult = 0;
  int32_t writeLess = 0;  // bytes that a write does not take
  int32_t readLess = 0;   // bytes that a read does not give
  int64_t sizeMore = 0;   // bytes that a stream claims to have beyond its own
  uint32_t kind = 0x20FFFF;
  uint64_t written = 0;

  Svclink Library() const { return Svclink({QueryKind, Create, Take}); }

 private:
  struct Object : SvclinkObject {
    std::string bytes;
    uint64_t version = 0;
    bool isStream = false;
  };
  struct Record : SvclinkRecord {
    std::string bytes;
  };

  static inline FakeSvclink* current = nullptr;

  static int32_t QueryKind(SvclinkObject*, uint32_t* to, int32_t argument) {
    *to = current->kind;
    return argument == 1 ? current->queryResult : 0;
  }

  static SvclinkObject* Create(int32_t number) {
    if (current->createsNothing) {
      return nullptr;
    }
    ++current->live;
    auto* const object = new Object{};
    object->isStream = number == 1;
    object->release = [](SvclinkObject* released) {
      --current->live;
      delete static_cast<Object*>(released);
    };
    object->open = current->hasNoOpen ? nullptr : Open;
    object->read = current->hasNoRead ? nullptr : Read;
    object->write = current->hasNoWrite ? nullptr : Write;
    object->size = current->hasNoSize ? nullptr : Size;
    return object;
  }

  static int32_t Open(SvclinkObject* object, const char* path, uint32_t flags) {
    auto* const opened = static_cast<Object*>(object);
    if (opened->isStream) {
      return *path == '\0' && flags == 258 ? current->openResult : -1;
    }
    current->opened.emplace_back(path);
    const auto found = current->versions.find(path);
    if (flags != 0x8000 || found == current->versions.end()) {
      return -1;
    }
    opened->version = found->second;
    return current->openResult;
  }

  static int32_t Read(SvclinkObject* object, uint64_t offset, void* to, uint32_t count) {
    const std::string& bytes = static_cast<Object*>(object)->bytes;
    const size_t taken = std::min<size_t>(count, bytes.size() - offset);
    std::memcpy(to, bytes.data() + offset, taken);
    return static_cast<int32_t>(taken) - current->readLess;
  }

  static int32_t Write(SvclinkObject* object, const void* from, uint32_t count) {
    static_cast<Object*>(object)->bytes.append(static_cast<const char*>(from), count);
    current->written += count;
    return static_cast<int32_t>(count) - current->writeLess;
  }

  static int64_t Size(SvclinkObject* object) {
    return static_cast<int64_t>(static_cast<Object*>(object)->bytes.size()) + current->sizeMore;
  }

  static int32_t Take(SvclinkObject* object, SvclinkRecord** to, int32_t argument) {
    if (current->takesNothing || argument != 0) {
      return 0;
    }
    if (current->takeResult < 0) {
      return current->takeResult;
    }
    const auto* const from = static_cast<Object*>(object);
    ++current->live;
    auto* const record = new Record{};
    record->bytes = from->bytes;
    record->version = from->version;
    record->release = [](SvclinkRecord* released) {
      --current->live;
      delete static_cast<Record*>(released);
    };
    record->data = [](SvclinkRecord* taken, uint32_t* size) -> const std::byte* {
      const std::string& bytes = static_cast<Record*>(taken)->bytes;
      *size = static_cast<uint32_t>(bytes.size());
      return current->dataIsNull ? nullptr : reinterpret_cast<const std::byte*>(bytes.data());
    };
    if (current->hasNoData) {
      record->data = nullptr;
    }
    *to = record;
    return current->takeResult;
  }
};

}  // namespace ostrell
