#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "platform/svclink.h"
#include "tests/support/outside_call.h"

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

  // What is not as it should be, by name:
  //   createsNothing, hasNoOpen, hasNoRead, hasNoWrite, hasNoSize, hasNoData, dataIsNull
  //   takesNothing                      take-record says yes and gives nothing
  //   openResult, queryResult, takeResult, kind
  //   writeLess, readLess, sizeMore     bytes not taken, not given, claimed beyond its own
  std::map<std::string, int64_t> odd;

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

  static int64_t Odd(const char* name, int64_t otherwise = 0) {
    const auto found = current->odd.find(name);
    return found != current->odd.end() ? found->second : otherwise;
  }
  static int32_t Result(const char* name, int32_t otherwise = 0) {
    return static_cast<int32_t>(Odd(name, otherwise));
  }

  static int32_t QueryKind(SvclinkObject*, uint32_t* to, int32_t argument) {
    const OutsideCall call(3);
    *to = call.Way() == 1 ? 0 : static_cast<uint32_t>(Odd("kind", 0x20FFFF));
    return call.Or(argument == 1 ? Result("queryResult", 1) : 0, {1, 0, -1});
  }

  static SvclinkObject* Create(int32_t number) {
    const OutsideCall call(1);
    if (Odd("createsNothing") != 0 || call.Fails()) {
      return nullptr;
    }
    ++current->live;
    auto* const object = new Object{};
    object->isStream = number == 1;
    object->release = [](SvclinkObject* released) {
      const OutsideCall releasing(0);
      --current->live;
      delete static_cast<Object*>(released);
    };
    object->open = Odd("hasNoOpen") != 0 ? nullptr : Open;
    object->read = Odd("hasNoRead") != 0 ? nullptr : Read;
    object->write = Odd("hasNoWrite") != 0 ? nullptr : Write;
    object->size = Odd("hasNoSize") != 0 ? nullptr : Size;
    return object;
  }

  static int32_t Open(SvclinkObject* object, const char* path, uint32_t flags) {
    const OutsideCall call(1);
    auto* const opened = static_cast<Object*>(object);
    if (opened->isStream) {
      return *path == '\0' && flags == 258 ? call.Or(Result("openResult"), {-1}) : -1;
    }
    current->opened.emplace_back(path);
    const auto found = current->versions.find(path);
    if (flags != 0x8000 || found == current->versions.end()) {
      return -1;
    }
    opened->version = found->second;
    return call.Or(Result("openResult"), {-1});
  }

  static int32_t Read(SvclinkObject* object, uint64_t offset, void* to, uint32_t count) {
    const OutsideCall call(3);
    const std::string& bytes = static_cast<Object*>(object)->bytes;
    const size_t taken = std::min<size_t>(count, bytes.size() - offset);
    std::memcpy(to, bytes.data() + offset, taken);
    const int32_t result = static_cast<int32_t>(taken) - Result("readLess");
    return call.Or(result, {-1, 0, result / 2});
  }

  static int32_t Write(SvclinkObject* object, const void* from, uint32_t count) {
    const OutsideCall call(3);
    static_cast<Object*>(object)->bytes.append(static_cast<const char*>(from), count);
    const int32_t result = static_cast<int32_t>(count) - Result("writeLess");
    return call.Or(result, {-1, 0, result / 2});
  }

  static int64_t Size(SvclinkObject* object) {
    const OutsideCall call(3);
    const auto size = static_cast<int64_t>(static_cast<Object*>(object)->bytes.size());
    return call.Or(size + Odd("sizeMore"), {-1, 0, INT64_MAX});
  }

  static int32_t Take(SvclinkObject* object, SvclinkRecord** to, int32_t argument) {
    const OutsideCall call(3);
    if (call.Fails()) {
      return call.Or(0, {-1, 0, 1});
    }
    if (Odd("takesNothing") != 0 || argument != 0) {
      return 0;
    }
    if (Result("takeResult") < 0) {
      return Result("takeResult");
    }
    const auto* const from = static_cast<Object*>(object);
    ++current->live;
    auto* const record = new Record{};
    record->bytes = from->bytes;
    record->version = from->version;
    record->release = [](SvclinkRecord* released) {
      const OutsideCall releasing(0);
      --current->live;
      delete static_cast<Record*>(released);
    };
    record->data = [](SvclinkRecord* taken, uint32_t* size) -> const std::byte* {
      const OutsideCall giving(2);
      const std::string& bytes = static_cast<Record*>(taken)->bytes;
      *size = giving.Way() == 2 ? 0 : static_cast<uint32_t>(bytes.size());
      return Odd("dataIsNull") != 0 || giving.Way() == 1
                 ? nullptr
                 : reinterpret_cast<const std::byte*>(bytes.data());
    };
    if (Odd("hasNoData") != 0) {
      record->data = nullptr;
    }
    *to = record;
    return Result("takeResult");
  }
};

}  // namespace ostrell
