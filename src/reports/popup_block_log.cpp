#include "reports/popup_block_log.h"

#include "reports/record_query.h"
#include "reports/windowed_report.h"
#include "store/record_store.h"
#include "store/schema.h"

namespace ostrell {
namespace {

constexpr size_t kPopupDatabase = 24;
static_assert(kDatabaseNames[kPopupDatabase] == "adblkuser.db");

bool HasSchema(sqlite3* database) {
  const MutexHold held = HoldMutex(database);
  return EnsureSchema(database) == 1;
}

}  // namespace

void PopupBlockJob(const Run& run) {
  RunWindowedReport(run, kPopupBlockLogTime,
                    [&run](int64_t from) { return SendPopupBlockReport(run, from, run.now); });
}

int32_t SendPopupBlockReport(const Run& run, int64_t from, int64_t to) {
  return SendRecords(PopupBlockLogUrl(OriginOf(run)),
                     [&] { return CollectPopupBlockEntries(run, from, to); });
}

std::optional<std::string> CollectPopupBlockEntries(const Run& run, int64_t from, int64_t to) {
  Connection database;
  if (OpenRecordStore(run.paths.databases[kPopupDatabase].CStr(), database) == 1 &&
      !HasSchema(database.Get())) {
    CloseRecordStore(database);
  }
  PopupEntries entries;
  const uint64_t leftOut =
      FetchBlockItems(database, RecordsInRange(from, to).Get(),
                      [&entries](const BlockItem& item) { entries.Add(item.detail.Get()); });
  if (leftOut > 0) {
    TraceLogger(run.traceLog, "FetchBlockItems")(L"Pop-up block log: %llu rows left out", leftOut);
  }
  return entries.Take();
}

void PopupEntries::Add(const json_t* entry) {
  if (json_object_get(entry, "product_name") != nullptr && met.IsNew(PopupFingerprint(entry))) {
    text.Add(entry);
  }
}

uint32_t PopupFingerprint(const json_t* entry) {
  const auto product = TextMember(entry, "product_name");
  if (!product) {
    return 0;
  }
  uint32_t fingerprint = ChainFingerprint(0, *product);
  if (product == "popblock") {
    for (const char* name : {"gname", "iname"}) {
      fingerprint = ChainFingerprint(fingerprint, TextMember(entry, name).value_or(""));
    }
  }
  return fingerprint;
}

}  // namespace ostrell
