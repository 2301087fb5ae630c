#include "store/block_item_query.h"

#include <limits>
#include <new>

#include "store/record_store.h"
#include "store/schema.h"
#include "tests/support/expect_recorded.h"
#include "tests/support/fetched_rows.h"
#include "tests/support/scarce_memory.h"

namespace ostrell {
namespace {

JsonOwner Parse(std::string_view document) {
  return JsonOwner(json_loadb(document.data(), document.size(), 0, nullptr));
}

// The text and the values, or "nothing".
std::string Compose(std::string_view document) {
  const JsonOwner parsed = Parse(document);
  EXPECT_TRUE(parsed) << document;
  const auto query = ComposeBlockItemQuery(parsed.Get());
  const JsonOwner values(json_array());
  for (size_t i = 0; query && i < query->values.size(); ++i) {
    json_array_append(values.Get(), query->values[i].Get());
  }
  return query ? query->text + CompactText(values) : "nothing";
}

class BlockItemQueryTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(OpenRecordStore(":memory:", database), 1);
    ASSERT_EQ(EnsureSchema(database.Get()), 1);
  }
  int Insert(std::string_view format, std::initializer_list<BindArgument> arguments) {
    return ExecBound(database.Get(), "INSERT INTO BlockItemLog(ts,detail,iname) VALUES(?,?,?)", -1,
                     format, arguments);
  }

  const void* const blob = "{}";
  Connection database;
};

TEST_F(BlockItemQueryTest, RecordedCases) {
  ASSERT_EQ(Insert("IsN", {std::numeric_limits<int64_t>::max(), "[1]xx", 3}), 1);
  ASSERT_EQ(Insert("ibs", {5, blob, 2, "name", -1}), 1);
  ExpectRecorded("block_item_query", [&](const std::string& input, const RecordedCase& recorded) {
    return recorded.Name() == "rows" ? FetchedRows(database, Parse(input).Get()) : Compose(input);
  });
  CloseRecordStore(database);
  EXPECT_EQ(FetchedRows(database, Parse("{}").Get()), "");
}

TEST_F(BlockItemQueryTest, WhatDoesNotBind) {
  EXPECT_EQ(Insert("ibs", {5, "{}", 2, "name", -1}), 0);  // text is no blob
  EXPECT_EQ(Insert("ib", {5, blob, -1}), 0);
  EXPECT_EQ(Insert("Ix", {int64_t{5}}), 0);
  EXPECT_EQ(Insert("I", {}), 0);
}

// Whichever allocation fails, no reference to a value is left behind.
TEST(ComposeBlockItemQueryTest, FailedAllocationsReleaseTheValues) {
  const JsonOwner range = Parse(R"({"n": "ts", "c": "><", "v": {"l": 1, "r": 2}})");
  const JsonOwner query(json_pack("{s:[O]}", "c", range.Get()));
  bool isComposed = false;
  int64_t failing = 0;
  while (!isComposed) {
    try {
      const ScarceMemory memory(++failing);
      isComposed = ComposeBlockItemQuery(query.Get()).has_value();
    } catch (const std::bad_alloc&) {
    }
    for (const char* side : {"l", "r"}) {
      EXPECT_EQ(json_object_get(json_object_get(range.Get(), "v"), side)->refcount, 1u) << failing;
    }
  }
  EXPECT_GT(failing, 2);
}

}  // namespace
}  // namespace ostrell
