#include <iterator>
#include <sstream>
#include <vector>

#include "env/customer_id.h"
#include "env/dotted_number_list.h"
#include "env/product_version.h"
#include "env/signature_version.h"
#include "tests/support/expect_recorded.h"
#include "tests/support/fake_run.h"

namespace ostrell {
namespace {

const FakeRegistry::Key kValue{RegistryRoot::kUser, L"SOFTWARE\\Velmora\\Corvane\\cid"};

// The id of a document, and what becomes of the user's value, which is 77.
TEST(CustomerId, RecordedCases) {
  FakeRun fake;
  ExpectRecorded("customer_id", [&](const std::string& document, const RecordedCase&) {
    fake.policydb.documents[25] = document;
    fake.registry.numbers[kValue] = 77;
    const std::string id = std::to_string(ReadCustomerId(fake.Get()));
    return id + (fake.registry.numbers.contains(kValue) ? " kept" : " deleted");
  });
  EXPECT_EQ(fake.policydb.dataPath, "C:\\Corvane\\data\\");
  EXPECT_EQ(fake.policydb.live, 0);
}

TEST(CustomerId, UsersValueThatIsNegativeOrMissingGivesZero) {
  FakeRun fake;
  EXPECT_EQ(ReadCustomerId(fake.Get()), 0U);
  fake.registry.numbers[kValue] = 0x7FFFFFFF;
  EXPECT_EQ(ReadCustomerId(fake.Get()), 0x7FFFFFFFU);
  fake.registry.numbers[kValue] = 0x80000000;
  EXPECT_EQ(ReadCustomerId(fake.Get()), 0U);
}

constexpr wchar_t kPath[] = L"C:\\Corvane\\VERSION";

TEST(DottedNumberList, RecordedCases) {
  ExpectRecorded("dotted_number_list", [](const std::string& input, const RecordedCase&) {
    return IsDottedNumberList(input) ? "yes" : "no";
  });
}

TEST(DottedNumberList, DigitRunsOfAnyLength) {
  const std::string zeros(100000, '0');
  EXPECT_TRUE(IsDottedNumberList("1.2.3." + zeros + "4/" + zeros + "8"));
  EXPECT_FALSE(IsDottedNumberList("1.2.3." + std::string(100000, '9')));
}

TEST(ProductVersion, RecordedCases) {
  FakeRun fake;
  ProductVersionText version("before");
  ExpectRecorded("product_version", [&](const std::string& content, const RecordedCase&) {
    fake.files.entries[kPath].content = content;
    const int32_t result = ReadProductVersion(fake.Get(), version);
    return std::to_string(result) + "|" + version.CStr() + "|";
  });
}

TEST(ProductVersion, FilesThatAreNotRead) {
  FakeRun fake;
  auto& entry = fake.files.entries[kPath];
  const auto isRead = [&] {
    ProductVersionText version("before");
    const int32_t result = ReadProductVersion(fake.Get(), version);
    EXPECT_EQ(version.IsEmpty(), result == 0);
    return result == 1;
  };
  EXPECT_TRUE(isRead());
  entry.isOpenForWriting = true;
  EXPECT_FALSE(isRead());
  entry = {.content = "5.0.1.2", .size = FakeFiles::kUntold};
  EXPECT_FALSE(isRead());
  entry = {.content = "5.0.1.2", .bad = 0};
  EXPECT_FALSE(isRead());
  fake.files.entries.clear();
  EXPECT_FALSE(isRead());
}

// A library of which every reading is laid down beforehand, in their order: a version, "missing"
// when the file does not open, "empty" when it holds no record.
struct Library {
  static inline std::vector<std::string> readings;
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
  static std::string Reading() { return made <= readings.size() ? readings[made - 1] : "missing"; }

  static int32_t Open(SvclinkObject*, const char* path, uint32_t) {
    const std::string name = std::string(path).substr(14);
    EXPECT_EQ(path, "D:\\data\\sigdb\\" + name);
    const std::string names = "patt.db attr.db mal.db okh.db keyhash.db ";
    EXPECT_NE(names.find(name + " "), std::string::npos) << name;
    files += name.substr(0, 1);
    return Reading() == "missing" ? -1 : 0;
  }
  static int32_t Take(SvclinkObject*, SvclinkRecord** taken, int32_t) {
    static SvclinkRecord record{};
    record.release = [](SvclinkRecord* released) {
      --live;
      released->version = 0xDEAD;
    };
    if (Reading() != "empty") {
      ++live;
      record.version = std::stoull(Reading());
      *taken = &record;
    }
    return 0;
  }
};

// The second reading of what does not fall counts.
TEST(SignatureVersion, RecordedCases) {
  ExpectRecorded("signature_version", [](const std::string& input, const RecordedCase&) {
    std::istringstream words(input);
    Library::readings.assign(std::istream_iterator<std::string>(words), {});
    Library::made = 0;
    Library::files.clear();
    const Svclink svclink({nullptr, Library::Create, Library::Take});
    const uint64_t newest = NewestSignatureVersion("D:\\data\\", svclink);
    EXPECT_EQ(Library::made, Library::readings.size());
    EXPECT_EQ(Library::live, 0);
    return std::to_string(newest) + " " + Library::files;
  });
}

}  // namespace
}  // namespace ostrell
