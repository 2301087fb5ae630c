#include "env/product_paths.h"
#include "platform/tracelog.h"
#include "reports/popup_block_log.h"
#include "reports/record_query.h"
#include "reports/windowed_report.h"
#include "store/record_store.h"
#include "store/schema.h"
#include "transport/report_url.h"

namespace ostrell {
namespace {

constexpr size_t kPopupDatabase = 24;
static_assert(kDatabaseNames[kPopupDatabase] == "adblkuser.db");

bool HasSchema(sqlite3* database) {
  const MutexHold held = HoldMutex(database);
  return EnsureSchema(database) == 1;
}

JsonOwner FetchPopupRows(json_t* query) {
  const PathText& path = GetProductPaths().databases[kPopupDatabase];
  Connection database;
  if (OpenRecordStore(path.CStr(), database) == 1 && !HasSchema(database.Get())) {
    CloseRecordStore(database);
  }
  uint64_t leftOut = 0;
  JsonOwner rows = FetchBlockItems(database, query, &leftOut);
  if (leftOut > 0) {
    TraceLogger("FetchBlockItems", __LINE__, 1)(L"Pop-up block log: %llu rows left out", leftOut);
  }
  return rows;
}

}  // namespace

void PopupBlockJob(const Settings& settings, int64_t now) {
  RunWindowedReport(settings, now, kPopupBlockLogTime,
                    [now](int64_t from) { return SendPopupBlockReport(from, now); });
}

int32_t SendPopupBlockReport(int64_t from, int64_t to) {
  return SendRecords(kPopupBlockLogUrl, CollectPopupBlockEntries(from, to));
}

JsonOwner CollectPopupBlockEntries(int64_t from, int64_t to) {
  return KeepPopupEntries(FetchPopupRows(RecordsInRange(from, to).Get()));
}

}  // namespace ostrell
