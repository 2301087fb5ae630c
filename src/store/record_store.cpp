#include "store/record_store.h"

#include <charconv>
#include <string_view>
#include <utility>

#include "base/bounded_json.h"
#include "store/block_item_query.h"
#include "store/limits.h"
#include "store/statement.h"

namespace ostrell {
namespace {

// Broken off: a check that began and met an error.
enum class Health { kSound, kDamaged, kUnknown, kBrokenOff };

bool IsDamage(int resultCode) {
  const int primary = resultCode & 0xFF;  // of an extended code
  return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

// Whether a finding of the check only says that a page could not be read. One of the texts comes
// with a result code, which may be damage; the others come for either reason.
bool NamesReadError(std::string_view finding) {
  constexpr std::string_view kWithCode = "unable to get the page. error code=";
  for (size_t at = finding.find(kWithCode); at != std::string_view::npos;
       at = finding.find(kWithCode, at + 1)) {
    int code = 0;
    std::from_chars(finding.data() + at + kWithCode.size(), finding.data() + finding.size(), code);
    if (!IsDamage(code)) {
      return true;
    }
  }
  return finding.find("failed to get page ") != std::string_view::npos ||
         finding.find("Failed to read ptrmap ") != std::string_view::npos;
}

Health CheckHealth(sqlite3* db) {
  const Statement check = Prepare(db, "PRAGMA quick_check");
  if (!check) {
    return IsDamage(sqlite3_errcode(db)) ? Health::kDamaged : Health::kUnknown;
  }
  Health found = Health::kSound;
  int step = SQLITE_ROW;
  while ((step = sqlite3_step(check.Get())) == SQLITE_ROW) {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(check.Get(), 0));
    if (text == nullptr || NamesReadError(text)) {
      return Health::kUnknown;
    }
    if (std::string_view(text) != "ok") {
      found = Health::kDamaged;
    }
  }
  return step == SQLITE_DONE || found == Health::kDamaged ? found : Health::kBrokenOff;
}

// The file is deleted for damage that is found twice: a read that failed once may look like it.
Health CheckHealthTwice(sqlite3* db) {
  const Health first = CheckHealth(db);
  if (first != Health::kDamaged) {
    return first;
  }
  sqlite3_db_release_memory(db);  // pages are read anew
  return CheckHealth(db);
}

GuardedVfs* OpenConnection(const char* path, int busyTimeout, MonotonicClock clock,
                           Connection& handle) {
  GuardedVfs* const guard = GuardedVfs::Open(path, clock, handle);
  if (guard == nullptr || !RestrictConnection(handle.Get())) {
    handle.Reset();
    return nullptr;
  }
  sqlite3_busy_timeout(handle.Get(), busyTimeout);
  guard->Allow(kMaxWorkMilliseconds);
  return guard;
}

// What is open elsewhere stays, without a word.
void DeleteDatabase(const char* path) {
  sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
  system->xDelete(system, path, 0);
}

// Whatever could be read of it, a database of unknown health is neither repaired nor changed.
bool BeginUse(sqlite3* db, Health health) {
  if (health == Health::kSound) {
    sqlite3_exec(db, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
  } else if (sqlite3_exec(db, "PRAGMA query_only=ON", nullptr, nullptr, nullptr) != SQLITE_OK) {
    return false;
  }
  sqlite3_limit(db, SQLITE_LIMIT_LENGTH, kLongestValue);
  return true;
}

// The current row, whose "detail" ends at its terminator.
BlockItem ReadBlockItem(sqlite3_stmt* row, const char* detail) {
  return {.id = sqlite3_column_int64(row, 0),
          .ts = sqlite3_column_int64(row, 1),
          .detail = detail != nullptr ? ParseJson(detail) : JsonOwner()};
}

}  // namespace

int32_t OpenRecordStore(const char* path, Connection& handle, int busyTimeout,
                        MonotonicClock clock) {
  handle.Reset();
  if (path == nullptr || *path == '\0') {
    return 0;
  }
  GuardedVfs* guard = OpenConnection(path, busyTimeout, clock, handle);
  Health health = guard != nullptr ? CheckHealthTwice(handle.Get()) : Health::kUnknown;
  if (health == Health::kDamaged) {
    handle.Reset();
    DeleteDatabase(path);
    guard = OpenConnection(path, busyTimeout, clock, handle);
    health = Health::kSound;
  }
  if (guard == nullptr || !BeginUse(handle.Get(), health)) {
    handle.Reset();
    return 0;
  }
  guard->Allow(kMaxWorkMilliseconds);
  return 1;
}

void CloseRecordStore(Connection& handle) {
  handle.Reset();
}

int QuickCheck(sqlite3* db) {
  const Health health = CheckHealth(db);
  return health == Health::kSound || health == Health::kBrokenOff ? 1 : 0;
}

uint64_t FetchBlockItems(const Connection& handle, const json_t* query,
                         const std::function<void(const BlockItem&)>& take) {
  if (!handle) {
    return 0;
  }
  const MutexHold held = HoldMutex(handle.Get());
  const Statement rows = BuildBlockItemQuery(handle.Get(), query);
  size_t taken = 0;
  size_t detailBytes = 0;
  uint64_t leftOut = 0;
  while (rows && sqlite3_step(rows.Get()) == SQLITE_ROW) {
    const auto* const detail = reinterpret_cast<const char*>(sqlite3_column_text(rows.Get(), 2));
    detailBytes += static_cast<size_t>(sqlite3_column_bytes(rows.Get(), 2));
    if (detailBytes > kMaxDetailBytes || taken == kMaxBlockItems) {
      ++leftOut;
    } else {
      ++taken;
      take(ReadBlockItem(rows.Get(), detail));
    }
  }
  return leftOut;
}

}  // namespace ostrell
