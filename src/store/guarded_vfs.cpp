#include "store/guarded_vfs.h"

#include <chrono>
#include <cstring>
#include <memory>

#include "base/print.h"

namespace ostrell {
namespace {

// Steps of SQLite's programs between two looks at the clock.
constexpr int kStepsPerLook = 1000;

GuardedVfs& Guard(sqlite3_vfs* vfs) {
  return *static_cast<GuardedVfs*>(vfs);
}

}  // namespace

int64_t SteadyMilliseconds() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

GuardedVfs::GuardedVfs(sqlite3_vfs* defaultVfs, MonotonicClock monotonicClock)
    : sqlite3_vfs{},
      base(defaultVfs),
      clock(monotonicClock),
      name(Print("guarded-%llx", reinterpret_cast<uintptr_t>(this))) {
  iVersion = 2;
  szOsFile = base->szOsFile;
  mxPathname = base->mxPathname;
  zName = name.c_str();
  xOpen = OpenFile;
  xDelete = [](sqlite3_vfs* vfs, const char* file, int syncFolder) {
    sqlite3_vfs* const system = Guard(vfs).base;
    return Guard(vfs).IsSideFile(file) ? system->xDelete(system, file, syncFolder)
                                       : SQLITE_IOERR_DELETE;
  };
  xAccess = [](sqlite3_vfs* vfs, const char* file, int flags, int* result) {
    sqlite3_vfs* const system = Guard(vfs).base;
    return Guard(vfs).IsSideFile(file) ? system->xAccess(system, file, flags, result)
                                       : SQLITE_IOERR_ACCESS;
  };
  xFullPathname = [](sqlite3_vfs* vfs, const char* file, int size, char* result) {
    return Guard(vfs).base->xFullPathname(Guard(vfs).base, file, size, result);
  };
  xRandomness = [](sqlite3_vfs* vfs, int size, char* result) {
    return Guard(vfs).base->xRandomness(Guard(vfs).base, size, result);
  };
  xSleep = Sleep;
  xGetLastError = [](sqlite3_vfs* vfs, int size, char* text) {
    return Guard(vfs).base->xGetLastError(Guard(vfs).base, size, text);
  };
  xCurrentTimeInt64 = [](sqlite3_vfs* vfs, sqlite3_int64* time) {
    return Guard(vfs).base->xCurrentTimeInt64(Guard(vfs).base, time);
  };
}

GuardedVfs* GuardedVfs::Open(const char* path, MonotonicClock clock, Connection& handle) {
  handle.Reset();
  sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
  if (system == nullptr) {
    return nullptr;
  }
  std::unique_ptr<GuardedVfs> guard(new GuardedVfs(system, clock));
  // A connection keeps the VFS that it once found by name.
  const bool opened =
      sqlite3_vfs_register(guard.get(), 0) == SQLITE_OK &&
      sqlite3_open_v2(path, handle.Receive(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                      guard->zName) == SQLITE_OK;
  sqlite3_vfs_unregister(guard.get());
  if (!opened) {
    handle.Reset();  // a failed opening gives a connection all the same
    return nullptr;
  }
  // The one destructor that SQLite runs after the connection's files are closed. It would be told
  // of vacuumed pages, too, but nobody vacuums here.
  sqlite3_autovacuum_pages(handle.Get(), nullptr, guard.get(),
                           [](void* ended) { delete static_cast<GuardedVfs*>(ended); });
  sqlite3_progress_handler(
      handle.Get(), kStepsPerLook,
      [](void* vfs) {
        const auto* const own = static_cast<const GuardedVfs*>(vfs);
        return own->clock() < own->deadline ? 0 : 1;
      },
      guard.get());
  return guard.release();
}

int GuardedVfs::OpenFile(sqlite3_vfs* vfs, const char* file, sqlite3_file* opened, int flags,
                         int* flagsThen) {
  GuardedVfs& guard = Guard(vfs);
  opened->pMethods = nullptr;
  if ((flags & SQLITE_OPEN_MAIN_DB) != 0 && guard.journal == nullptr) {
    guard.journal = sqlite3_filename_journal(file);
    guard.wal = sqlite3_filename_wal(file);
  } else if ((flags & (SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_WAL)) == 0 ||
             !guard.IsSideFile(file)) {
    return SQLITE_CANTOPEN;
  }
  return guard.base->xOpen(guard.base, file, opened, flags, flagsThen);
}

bool GuardedVfs::IsSideFile(const char* file) const {
  return journal != nullptr && file != nullptr &&
         (std::strcmp(file, journal) == 0 || std::strcmp(file, wal) == 0);
}

int GuardedVfs::Sleep(sqlite3_vfs* vfs, int microseconds) {
  GuardedVfs& guard = Guard(vfs);
  const int64_t start = guard.clock();
  const int slept = guard.base->xSleep(guard.base, microseconds);
  guard.deadline += guard.clock() - start;
  return slept;
}

}  // namespace ostrell
