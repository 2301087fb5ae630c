#include "env/signature_version.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace ostrell {
namespace {

constexpr uint64_t kMissing = std::numeric_limits<uint64_t>::max();  // does not open
constexpr uint64_t kNoRecord = kMissing - 1;                         // opens, but holds none

// A library of which every reading is laid down beforehand: the versions, in their order.
struct Library {
  static inline std::vector<uint64_t> readings;
  static inline size_t made = 0;
  static inline std::string files;  // the first letters of those opened
  static inline int live = 0;       // objects and records given out

  static SvclinkObject* Create(int32_t) {
    static SvclinkObject object{};
    object.open = Open;
    object.release = [](SvclinkObject*) { EXPECT_EQ(--live, 0) << "a record outlived its file"; };
    ++live;
    ++made;
    return &object;
  }
  static uint64_t Version() { return made <= readings.size() ? readings[made - 1] : kMissing; }

  static int32_t Open(SvclinkObject*, const char* path, uint32_t) {
    const std::string name = std::string(path).substr(14);
    EXPECT_EQ(path, "D:\\data\\sigdb\\" + name);
    const std::string names = "patt.db attr.db mal.db okh.db keyhash.db ";
    EXPECT_NE(names.find(name + " "), std::string::npos) << name;
    files += name.substr(0, 1);
    return Version() == kMissing ? -1 : 0;
  }
  static int32_t Take(SvclinkObject*, SvclinkRecord** taken, int32_t) {
    static SvclinkRecord record{};
    record.version = Version();
    record.release = [](SvclinkRecord* released) {
      --live;
      released->version = 0xDEAD;
    };
    if (Version() != kNoRecord) {
      ++live;
      *taken = &record;
    }
    return 0;
  }
};

TEST(SignatureVersion, SecondReadingOfWhatDoesNotFallCounts) {
  constexpr uint64_t kLarge = 0xFEDCBA9876543210;
  const struct {
    std::vector<uint64_t> readings;
    uint64_t newest;
    const char* files;
  } kCases[] = {{{5, 5, 4, 3, 2, 1}, 5, "ppamok"},
                {{1, 1, 2, 2, 3, 3, 4, 4, kLarge, kLarge}, kLarge, "ppaammookk"},
                {{7, 7, 7, 7, 6, 7, 7, 6}, 7, "ppaamook"},
                // Lower than the first reading, and lower than the newest so far.
                {{9, 9, 10, 4, 3, 2, 1}, 4, "ppaamok"},
                {{9, 9, 10, kMissing, 3, 3, 2, 1}, 3, "ppaammok"},
                {{1, 1, 2, 2, 3, 3, 4, 4, 5, kNoRecord}, 0, "ppaammookk"},
                {{8, 8, kMissing, kNoRecord, kMissing, kNoRecord}, 8, "ppamok"},
                // 0 does not fall below 0: each missing file is tried twice.
                {std::vector(10, kMissing), 0, "ppaammookk"}};
  for (const auto& row : kCases) {
    Library::readings = row.readings;
    Library::made = 0;
    Library::files.clear();
    const Svclink svclink({nullptr, Library::Create, Library::Take});
    EXPECT_EQ(NewestSignatureVersion("D:\\data\\", svclink), row.newest);
    EXPECT_EQ(Library::files, row.files);
    EXPECT_EQ(Library::made, row.readings.size());
    EXPECT_EQ(Library::live, 0);
  }
}

}  // namespace
}  // namespace ostrell
