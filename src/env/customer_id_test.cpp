#include "env/customer_id.h"

#include <gtest/gtest.h>

#include "tests/support/fake_run.h"

namespace ostrell {
namespace {

class CustomerIdTest : public testing::Test {
 protected:
  const FakeRegistry::Key kValue{RegistryRoot::kUser, L"SOFTWARE\\Velmora\\Corvane\\cid"};
  FakeRegistry registry;
};

TEST_F(CustomerIdTest, DocumentsIdWinsAndDeletesTheUsersValue) {
  const struct {
    const char* json;
    uint32_t id;
  } cases[] = {{R"({"id":0})", 0},
               {R"({"id":1,"other":"x"})", 1},
               {R"({"id":2147483647})", 2147483647},
               {R"({"id":4294967301})", 5},
               // None of these is an id.
               {R"({"id":-1})", 77},
               {R"({"id":2147483648})", 77},
               {R"({"id":"5"})", 77},
               {R"({"id":5.0})", 77},
               {R"({"ID":5})", 77},
               {"[5]", 77},
               {"5", 77}};
  for (const auto& row : cases) {
    registry.numbers[kValue] = 77;
    const JsonOwner document(json_loads(row.json, JSON_DECODE_ANY, nullptr));
    ASSERT_TRUE(document) << row.json;
    EXPECT_EQ(CustomerIdFrom(document.Get(), registry), row.id) << row.json;
    EXPECT_EQ(registry.numbers.contains(kValue), row.id == 77) << row.json;
  }
}

TEST_F(CustomerIdTest, UsersValueThatIsNegativeOrMissingGivesZero) {
  EXPECT_EQ(CustomerIdFrom(nullptr, registry), 0U);
  registry.numbers[kValue] = 0x7FFFFFFF;
  EXPECT_EQ(CustomerIdFrom(nullptr, registry), 0x7FFFFFFFU);
  registry.numbers[kValue] = 0x80000000;
  EXPECT_EQ(CustomerIdFrom(nullptr, registry), 0U);
}

TEST_F(CustomerIdTest, DocumentIsNumber25OfTheDataPath) {
  FakeRun fake;
  fake.registry.numbers[kValue] = 78;
  EXPECT_EQ(ReadCustomerId(fake.Get()), 78U);
  fake.policydb.documents[25] = R"({"id": 5})";
  EXPECT_EQ(ReadCustomerId(fake.Get()), 5U);
  EXPECT_EQ(fake.policydb.dataPath, "C:\\Corvane\\data\\");
  EXPECT_EQ(fake.policydb.live, 0);
}

}  // namespace
}  // namespace ostrell
