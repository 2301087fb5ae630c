#include <gtest/gtest.h>

#include "reports/record_query.h"
#include "tests/support/private_registry_win.h"
#include "tests/support/test_folder_win.h"

namespace ostrell {
namespace {

// One case: the process keeps the data path that it finds first.
TEST(RunRecordQuery, AsksTheRecordStoreOfTheDataPath) {
  const TestFolder folder;
  const PrivateRegistry registry;
  PrivateRegistry::SetText(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velmora\\Corvane\\app", L"DataPath",
                           folder.Path().wstring());
  folder.Write("records.json", R"([{"ts": 5, "fid": -1}, {"ts": 9, "fid": 3}, {"ts": 10}])");
  const JsonOwner found = RunRecordQuery(RecordsInRange(5, 9).Get());
  ASSERT_EQ(json_array_size(found.Get()), 2u);
  EXPECT_EQ(json_integer_value(json_object_get(json_array_get(found.Get(), 0), "ts")), 9);
  EXPECT_EQ(json_array_size(RunRecordQuery(RecordsInRangeWithNegativeId(0, 20).Get()).Get()), 1u);

  EXPECT_FALSE(RunRecordQuery(RecordsInRange(0, 4).Get()));  // no record
  EXPECT_FALSE(RunRecordQuery(nullptr));
  folder.Write("records.json", "[");
  EXPECT_FALSE(RunRecordQuery(RecordsInRange(0, 20).Get()));  // no store
}

}  // namespace
}  // namespace ostrell
