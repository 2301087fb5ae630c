#include "reports/popup_block_log.h"

#include "reports/fingerprint.h"
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

JsonOwner FetchPopupRows(const Run& run, json_t* query) {
  Connection database;
  if (OpenRecordStore(run.paths.databases[kPopupDatabase].CStr(), database) == 1 &&
      !HasSchema(database.Get())) {
    CloseRecordStore(database);
  }
  uint64_t leftOut = 0;
  JsonOwner rows = FetchBlockItems(database, query, &leftOut);
  if (leftOut > 0) {
    TraceLogger(run.traceLog, "FetchBlockItems")(L"Pop-up block log: %llu rows left out", leftOut);
  }
  return rows;
}

json_t* EntryOf(json_t* row) {
  return json_object_get(row, "detail");
}

std::optional<uint32_t> FingerprintOfEntry(json_t* row) {
  const json_t* const entry = EntryOf(row);
  return json_object_get(entry, "product_name") != nullptr ? std::optional(PopupFingerprint(entry))
                                                           : std::nullopt;
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

JsonOwner CollectPopupBlockEntries(const Run& run, int64_t from, int64_t to) {
  return KeepPopupEntries(FetchPopupRows(run, RecordsInRange(from, to).Get()));
}

JsonOwner KeepPopupEntries(const JsonOwner& rows) {
  return KeepFirstOfEach(rows, FingerprintOfEntry, EntryOf);
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
