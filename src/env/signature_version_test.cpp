#include "env/signature_version.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ostrell {
namespace {

using testing::ElementsAre;

enum class Outcome { kRead, kNoObject, kNoOpenEntry, kOpenFails, kRecordFails, kNoRecord };

// One reading of a file, in the order in which they are made.
struct Step {
  uint64_t version;
  Outcome outcome = Outcome::kRead;
};
constexpr Step kMissing{0, Outcome::kOpenFails};

// A library of which every reading is laid down beforehand, and which counts what it gave out.
class SignatureVersionTest : public testing::Test {
 protected:
  void SetUp() override { current = this; }

  uint64_t Newest(std::vector<Step> readings) {
    steps = std::move(readings);
    made = 0;
    opened.clear();
    const uint64_t newest =
        NewestSignatureVersion("D:\\data\\", Svclink({nullptr, CreateObject, TakeRecord}));
    EXPECT_EQ(made, steps.size());
    EXPECT_EQ(objects, 0);
    EXPECT_EQ(records, 0);
    return newest;
  }

  // The files opened, without their folder.
  std::vector<std::string> opened;

 private:
  static SvclinkObject* CreateObject(int32_t kind) {
    EXPECT_EQ(kind, 0);
    const size_t number = current->made++;
    current->step = number < current->steps.size() ? current->steps[number] : kMissing;
    if (current->step.outcome == Outcome::kNoObject) {
      return nullptr;
    }
    ++current->objects;
    current->object = {};
    current->object.release = ReleaseObject;
    current->object.open = current->step.outcome == Outcome::kNoOpenEntry ? nullptr : Open;
    return &current->object;
  }

  static int32_t Open(SvclinkObject*, const char* path, uint32_t flags) {
    EXPECT_EQ(flags, 0x8000U);
    const std::string folder = "D:\\data\\sigdb\\";
    EXPECT_EQ(std::string(path).substr(0, folder.size()), folder);
    current->opened.push_back(std::string(path).substr(folder.size()));
    return current->step.outcome == Outcome::kOpenFails ? -1 : 0;
  }

  static int32_t TakeRecord(SvclinkObject* object, SvclinkRecord** record, int32_t argument) {
    EXPECT_EQ(object, &current->object);
    EXPECT_EQ(argument, 0);
    if (current->step.outcome != Outcome::kRead) {
      return current->step.outcome == Outcome::kRecordFails ? -1 : 0;
    }
    ++current->records;
    current->record = {};
    current->record.release = ReleaseRecord;
    current->record.version = current->step.version;
    *record = &current->record;
    return 0;
  }

  static void ReleaseObject(SvclinkObject*) {
    EXPECT_EQ(current->records, 0) << "a record outlived its file";
    --current->objects;
  }

  static void ReleaseRecord(SvclinkRecord* record) {
    record->version = 0xDEAD;
    --current->records;
  }

  static inline SignatureVersionTest* current = nullptr;

  std::vector<Step> steps;
  size_t made = 0;
  Step step = kMissing;
  SvclinkObject object{};
  SvclinkRecord record{};
  int objects = 0;  // given out and not yet released
  int records = 0;
};

TEST_F(SignatureVersionTest, FilesAreReadInTheirOrder) {
  EXPECT_EQ(Newest({{5}, {5}, {4}, {3}, {2}, {1}}), 5U);
  EXPECT_THAT(opened,
              ElementsAre("patt.db", "patt.db", "attr.db", "mal.db", "okh.db", "keyhash.db"));
}

TEST_F(SignatureVersionTest, SecondReadingOfWhatDoesNotFallCounts) {
  constexpr uint64_t kLarge = 0xFEDCBA9876543210;
  const struct {
    std::vector<Step> readings;
    uint64_t newest;
    std::string files;  // their first letters
  } cases[] = {{{{1}, {1}, {2}, {2}, {3}, {3}, {4}, {4}, {kLarge}, {kLarge}}, kLarge, "ppaammookk"},
               {{{7}, {7}, {7}, {7}, {6}, {7}, {7}, {6}}, 7, "ppaamook"},
               // Lower than the first reading, and lower than the newest so far.
               {{{9}, {9}, {10}, {4}, {3}, {2}, {1}}, 4, "ppaamok"},
               {{{9}, {9}, {10}, kMissing, {3}, {3}, {2}, {1}}, 3, "ppaammok"},
               {{{1}, {1}, {2}, {2}, {3}, {3}, {4}, {4}, {5}, kMissing}, 0, "ppaammookk"},
               // 0 does not fall below 0: each missing file is tried twice.
               {std::vector<Step>(10, kMissing), 0, "ppaammookk"}};
  for (const auto& row : cases) {
    EXPECT_EQ(Newest(row.readings), row.newest);
    std::string files;
    for (const std::string& file : opened) {
      files += file[0];
    }
    EXPECT_EQ(files, row.files);
  }
}

TEST_F(SignatureVersionTest, EveryFailureCountsAsZeroAndReleasesWhatWasTaken) {
  for (const Outcome outcome : {Outcome::kNoObject, Outcome::kNoOpenEntry, Outcome::kOpenFails,
                                Outcome::kRecordFails, Outcome::kNoRecord}) {
    SCOPED_TRACE(static_cast<int>(outcome));
    const Step failing{99, outcome};
    EXPECT_EQ(Newest({{8}, {8}, failing, failing, failing, failing}), 8U);
    EXPECT_EQ(Newest({{8}, failing, {5}, {5}, {4}, {3}, {2}}), 5U);
  }
}

TEST(SignatureVersionWithoutLibraryTest, NothingIsRead) {
  EXPECT_EQ(NewestSignatureVersion("D:\\data\\", Svclink({nullptr, nullptr, nullptr})), 0U);
}

}  // namespace
}  // namespace ostrell
