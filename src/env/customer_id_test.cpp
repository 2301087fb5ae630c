#include "env/customer_id.h"

#include <gtest/gtest.h>

#include "tests/support/fake_run.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

const FakeRegistry::Key kValue{RegistryRoot::kUser, L"SOFTWARE\\Velmora\\Corvane\\cid"};

// A case without ids is of documents that hold none: the user's value counts and stays.
TEST(CustomerId, RecordedCases) {
  FakeRun fake;
  for (const RecordedCase& recorded : CasesOf("customer_id")) {
    const auto ids = recorded.All("id");
    size_t number = 0;
    for (const std::string& document : recorded.All("document")) {
      SCOPED_TRACE(document);
      fake.policydb.documents[25] = document;
      fake.registry.numbers[kValue] = 77;
      const std::string expected = ids.empty() ? "77" : ids.at(number++);
      EXPECT_EQ(std::to_string(ReadCustomerId(fake.Get())), expected);
      EXPECT_EQ(fake.registry.numbers.contains(kValue), ids.empty());
    }
  }
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

}  // namespace
}  // namespace ostrell
