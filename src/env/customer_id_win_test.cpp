#include <gtest/gtest.h>

#include "env/customer_id.h"
#include "tests/support/private_registry_win.h"

namespace ostrell {
namespace {

using namespace std::string_view_literals;

constexpr wchar_t kKey[] = L"SOFTWARE\\Velmora\\Corvane";

class CustomerIdTest : public testing::Test {
 protected:
  static void Store(DWORD type, std::string_view bytes) {
    PrivateRegistry::SetBytes(HKEY_CURRENT_USER, kKey, L"cid", type, bytes);
  }
  static bool IsStored() { return ReadRegistryDword(HKEY_CURRENT_USER, kKey, L"cid").has_value(); }

  PrivateRegistry registry;
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
    Store(REG_DWORD, "\x4D\0\0\0"sv);
    const JsonOwner document(json_loads(row.json, JSON_DECODE_ANY, nullptr));
    ASSERT_TRUE(document) << row.json;
    EXPECT_EQ(CustomerIdFrom(document.Get()), row.id) << row.json;
    EXPECT_EQ(IsStored(), row.id == 77) << row.json;
  }
}

TEST_F(CustomerIdTest, UsersValueThatIsNoneGivesZero) {
  EXPECT_EQ(CustomerIdFrom(nullptr), 0U);
  Store(REG_DWORD, "\xFF\xFF\xFF\x7F");
  EXPECT_EQ(CustomerIdFrom(nullptr), 0x7FFFFFFFU);
  Store(REG_DWORD, "\0\0\0\x80"sv);
  EXPECT_EQ(CustomerIdFrom(nullptr), 0U);
  Store(REG_SZ, "7\0\0\0"sv);
  EXPECT_EQ(CustomerIdFrom(nullptr), 0U);
}

TEST_F(CustomerIdTest, WithoutThePolicyLibraryTheUsersValueCounts) {
  Store(REG_DWORD, "\x4E\0\0\0"sv);
  EXPECT_EQ(ReadCustomerId(), 78U);
  EXPECT_TRUE(IsStored());
}

}  // namespace
}  // namespace ostrell
