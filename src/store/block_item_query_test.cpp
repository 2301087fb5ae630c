#include "store/block_item_query.h"

#include <gtest/gtest.h>

#include <limits>

#include "store/record_store.h"
#include "store/schema.h"
#include "tests/support/recorded_cases.h"

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
  for (const RecordedCase& recorded : CasesOf("block_item_query")) {
    const auto expected = recorded.All("expect");
    const auto rows = recorded.All("rows");
    for (size_t i = 0; const std::string& input : recorded.All("input")) {
      SCOPED_TRACE(recorded.Name() + ": " + input);
      if (!expected.empty()) {
        EXPECT_EQ(Compose(input), expected.size() == 1 ? expected[0] : expected.at(i));
      } else {
        EXPECT_EQ(CompactText(FetchBlockItems(database, Parse(input).Get())), rows.at(i));
      }
      ++i;
    }
  }
  CloseRecordStore(database);
  EXPECT_FALSE(FetchBlockItems(database, Parse("{}").Get()));
}

TEST_F(BlockItemQueryTest, WhatDoesNotBind) {
  EXPECT_EQ(Insert("ibs", {5, "{}", 2, "name", -1}), 0);  // text is no blob
  EXPECT_EQ(Insert("ib", {5, blob, -1}), 0);
  EXPECT_EQ(Insert("Ix", {int64_t{5}}), 0);
  EXPECT_EQ(Insert("I", {}), 0);
}

TEST_F(BlockItemQueryTest, TextIsBoundedAndOrderIsCut) {
  const auto condition = [](size_t length) {  // 53 bytes and the column's name
    return R"({"c":[{"c":"=","v":1,"n":")" + std::string(length, 'x') + R"("}]})";
  };
  EXPECT_EQ(Compose(condition(4042)).size(), 4095 + 3);
  EXPECT_EQ(Compose(condition(4043)), "nothing");
  const std::string column(1020, 'x');
  const std::string start = "SELECT id, ts, detail FROM BlockItemLog ORDER BY ";
  EXPECT_EQ(Compose(R"({"o":[{"n":"a","t":"ASC"},{"t":"DESC","n":")" + column + R"("}]})"),
            start + "a ASC, " + column + " []");
  EXPECT_EQ(Compose(R"({"o":{"t":"DESC","n":")" + column + R"("},"p":{"s":1,"c":0}})"),
            start + column + " DE LIMIT 0, 1 []");
}

}  // namespace
}  // namespace ostrell
