#include "reports/popup_block_log.h"

#include <gtest/gtest.h>

namespace ostrell {
namespace {

TEST(KeepPopupEntries, OneEntryAnItem) {
  const JsonOwner rows(json_loads(R"([
      {"id": 9, "ts": 9, "detail": {"product_name": "popblock", "gname": "g", "iname": "i", "n": 1}},
      {"id": 8, "ts": 8, "detail": {"product_name": "popblock", "gname": "g", "iname": "i", "n": 2}},
      {"id": 7, "ts": 7, "detail": {"product_name": "popblock", "gname": "g"}},
      {"id": 6, "ts": 6, "detail": {"product_name": "popblock", "gname": "g", "iname": 5}},
      {"id": 5, "ts": 5, "detail": {"product_name": "Popblock", "gname": "a"}},
      {"id": 4, "ts": 4, "detail": {"product_name": "Popblock", "gname": "b"}},
      {"id": 3, "ts": 3, "detail": {"gname": "g"}}, {"id": 3, "ts": 3}, 3,
      {"id": 2, "ts": 2, "detail": [1]},
      {"id": 1, "ts": 1, "detail": {"product_name": null}},
      {"id": 0, "ts": 0, "detail": {"product_name": 5}}])",
                                  0, nullptr));
  EXPECT_EQ(CompactText(KeepPopupEntries(rows)),
            R"([{"product_name":"popblock","gname":"g","iname":"i","n":1},)"
            R"({"product_name":"popblock","gname":"g"},)"
            R"({"product_name":"Popblock","gname":"a"},{"product_name":null}])");
  EXPECT_FALSE(KeepPopupEntries(JsonOwner(json_pack("[{s:{}}]", "detail"))));
  EXPECT_FALSE(KeepPopupEntries({}));
}

// Computed by another program.
TEST(PopupFingerprint, ChainsGroupAndItemOfThePopupBlockerAlone) {
  const struct {
    const char* entry;
    uint32_t fingerprint;
  } cases[] = {
      {R"({"product_name": "popblock", "gname": "G1", "iname": "I1"})", 0xd158a0da},
      {R"({"product_name": "popblock", "iname": ["I1"]})", 0xfa971f0b},
      {R"({"product_name": "adguide", "gname": "G1", "iname": "I1"})", 0x2f74e54b},
      {R"({"gname": "G1"})", 0},
      {R"([])", 0},
  };
  for (const auto& [entry, fingerprint] : cases) {
    const JsonOwner value(json_loads(entry, 0, nullptr));
    EXPECT_EQ(PopupFingerprint(value.Get()), fingerprint) << entry;
  }
}

}  // namespace
}  // namespace ostrell
