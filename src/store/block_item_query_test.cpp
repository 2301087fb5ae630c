#include "store/block_item_query.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "store/record_store.h"
#include "store/schema.h"

namespace ostrell {
namespace {

JsonOwner Parse(std::string_view document) {
  JsonOwner parsed(json_loadb(document.data(), document.size(), JSON_DECODE_ANY, nullptr));
  EXPECT_TRUE(parsed) << document;
  return parsed;
}

// The text behind "BlockItemLog" and the values, or "nothing".
std::string Compose(std::string_view document) {
  const JsonOwner parsed = Parse(document);
  const auto query = ComposeBlockItemQuery(parsed.Get());
  if (!query) {
    return "nothing";
  }
  const JsonOwner values(json_array());
  for (const JsonOwner& value : query->values) {
    json_array_append(values.Get(), value.Get());
  }
  EXPECT_TRUE(query->text.starts_with("SELECT id, ts, detail FROM BlockItemLog")) << query->text;
  return query->text.substr(39) + CompactText(values);
}

TEST(BlockItemQuery, TextAndValues) {
  const std::string_view cases[][2] = {
      {R"({"c":[{"n":"ts","c":"><","v":{"l":1700000000,"r":1700086400}}],)"
       R"("o":{"n":"ts","t":"ASC"},"p":{"s":100,"c":0}})",
       " WHERE  (ts BETWEEN ? AND ?) ORDER BY ts ASC LIMIT 0, 100 [1700000000,1700086400]"},
      {"{}", "[]"},
      {R"({"c":[{"n":"a","c":"=","v":1},{"n":"b","c":">","v":"x"},{"n":"d","c":">=","v":2}]})",
       R"( WHERE  (a = ?) AND (b > ?) AND (d >= ?)[1,"x",2])"},
      {R"({"c":[{"n":"a","c":"<","v":1},{"n":"b","c":"<=","v":null},{"n":"d","c":"<>","v":[]}]})",
       " WHERE  (a < ?) AND (b <= ?) AND (d != ?)[1,null,[]]"},
      {R"({"c":[{"n":"a","c":"LIKE","v":"%"},{"n":"b","c":"liKe","v":1.5}]})",
       R"( WHERE  (a LIKE ?) AND (b LIKE ?)["%",1.5])"},
      {R"({"c":[{"n":"id","c":"IN","v":[7,"x"]},{"n":"ts","c":"in","v":[]}]})",
       R"( WHERE  (id IN (?,?)) AND (ts IN ())[7,"x"])"},
      {R"({"c":[]})", " WHERE []"},
      {R"({"c":[{"n":"a","c":"!=","v":1},{"n":"b","c":"","v":1},{"n":"d","c":"=","v":1}]})",
       " WHERE  (a AND (b AND (d = ?)[1]"},
      {R"({"o":[{"n":"ts","t":"DESC"},{"n":"id","t":""}]})", " ORDER BY ts DESC, id []"},
      {R"({"o":[]})", " ORDER BY []"},
      {R"({"p":{"index":20,"s":10}})", " LIMIT 20, 10 []"},
      {R"({"p":{"index":0,"s":10,"c":5}})", " LIMIT 0, 10 []"},
      {R"({"p":{"index":-1,"s":10,"c":5}})", " LIMIT 50, 10 []"},
      {R"({"p":{"s":2147483647,"c":1}})", " LIMIT 2147483647, 2147483647 []"}};
  for (const auto& [document, composed] : cases) {
    EXPECT_EQ(Compose(document), composed) << document;
  }
}

TEST(BlockItemQuery, DamagedDescriptions) {
  std::istringstream documents(R"(
{"c":{}} {"c":null} {"c":[1]} {"c":[{"n":"a","c":"="}]} {"c":[{"n":1,"c":"=","v":1}]}
{"c":[{"n":"a","c":"==","v":1}]} {"c":[{"n":"a","c":">>","v":1}]}
{"c":[{"n":"a","c":"<in","v":1}]} {"c":[{"n":"a","c":"><","v":{"l":1}}]}
{"c":[{"n":"a","c":"><","v":{"r":1}}]} {"c":[{"n":"a","c":"><","v":[1,2]}]}
{"c":[{"n":"a","c":"in","v":{"0":1}}]} {"o":"ts"} {"o":{"n":"ts"}}
{"o":[{"n":"ts","t":"ASC"},7]} {"p":{"s":65536,"c":32768}} {"p":{"s":65536,"c":65536}}
{"p":{"s":2147483648,"c":0}} {"p":{"s":4294967306,"c":0}}
{"p":{"s":10,"index":-2147483649,"c":0}} {"p":{"s":10}} {"p":{"s":10,"c":-1}}
{"p":{"s":0,"c":0}} {"p":{"c":0}} {"p":{"s":10.0,"c":0}} {"p":{"s":10,"index":0,"c":"0"}}
{"p":[10,0]})");
  for (std::string document; documents >> document;) {
    EXPECT_EQ(Compose(document), "nothing") << document;
  }
}

TEST(BlockItemQuery, TextIsBoundedAndOrderIsCut) {
  const auto condition = [](size_t length) {  // 53 bytes and the column's name
    return R"({"c":[{"c":"=","v":1,"n":")" + std::string(length, 'x') + R"("}]})";
  };
  EXPECT_EQ(Compose(condition(4042)).size(), 4095 - 39 + 3);
  EXPECT_EQ(Compose(condition(4043)), "nothing");
  const std::string longColumn(1020, 'x');
  EXPECT_EQ(Compose(R"({"o":[{"n":"a","t":"ASC"},{"t":"DESC","n":")" + longColumn + R"("}]})"),
            " ORDER BY a ASC, " + longColumn + " []");
  EXPECT_EQ(Compose(R"({"o":{"t":"DESC","n":")" + longColumn + R"("},"p":{"s":1,"c":0}})"),
            " ORDER BY " + longColumn + " DE LIMIT 0, 1 []");
}

TEST(BlockItemQuery, RunsWithWhatCanBeBound) {
  Connection database;
  ASSERT_EQ(OpenRecordStore(":memory:", database), 1);
  ASSERT_EQ(EnsureSchema(database.Get()), 1);
  const int64_t largest = std::numeric_limits<int64_t>::max();
  constexpr char kInsert[] = "INSERT INTO BlockItemLog(ts,detail,iname) VALUES(?,?,?)";
  const void* const blob = "{}";
  const auto insert = [&](std::string_view format, std::initializer_list<BindArgument> arguments) {
    return ExecBound(database.Get(), kInsert, -1, format, arguments);
  };
  EXPECT_EQ(insert("IsN", {largest, "[1]xx", 3}), 1);
  EXPECT_EQ(insert("ibs", {5, blob, 2, "name", -1}), 1);
  EXPECT_EQ(insert("ibs", {5, "{}", 2, "name", -1}), 0);  // text is no blob
  EXPECT_EQ(insert("ib", {5, blob, -1}), 0);
  EXPECT_EQ(insert("Ix", {largest}), 0);
  EXPECT_EQ(insert("I", {}), 0);

  const std::string first = R"({"id":1,"ts":9223372036854775807,"detail":[1]})";
  const std::string second = R"({"id":2,"ts":5,"detail":{}})";
  const std::pair<std::string_view, std::string> cases[] = {
      {R"({"o":{"n":"ts","t":"asc"}})", "[" + second + "," + first + "]"},
      {R"({"c":[{"n":"ts","c":"=","v":9223372036854775807}]})", "[" + first + "]"},
      {R"({"c":[{"n":"iname","c":"like","v":"N_me"},{"n":"ts","c":"<","v":6}]})",
       "[" + second + "]"},
      {R"({"c":[{"n":"ts","c":"=","v":6}]})", ""},
      {R"({"c":[{"n":"ts","c":"<","v":6.5}]})", ""},
      {R"({"c":[{"n":"ts","c":"in","v":[5,null]}]})", ""},
      {R"({"c":[]})", ""},
      {R"({"c":[{"n":"ts","c":"in","v":[]}]})", ""},
      {R"({"c":[{"n":"ts","c":"is","v":5}]})", ""},
      {R"({"c":[{"n":"1) -- ","c":"=","v":5}]})", ""}};
  for (const auto& [document, rows] : cases) {
    EXPECT_EQ(CompactText(FetchBlockItems(database, Parse(document).Get())), rows) << document;
  }
  CloseRecordStore(database);
  EXPECT_FALSE(FetchBlockItems(database, Parse("{}").Get()));
}

}  // namespace
}  // namespace ostrell
