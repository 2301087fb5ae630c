#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>

#include "store/connection.h"

namespace ostrell {

// Milliseconds since some moment, never going back.
using MonotonicClock = int64_t (*)();
int64_t SteadyMilliseconds();

// The files and the time that one connection may use. Whoever may put files beside a database
// decides what SQLite finds in its journals, and a journal can name any file of the machine.
//
// Files: the database itself, "-journal" and "-wal" beside it, and the latter's index "-shm" are
// opened and, the database apart, deleted as SQLite sees fit. Every other file is refused without a
// question to the system: one to open or delete with an error, one that may exist as one of which
// that cannot be told. A journal that names such a file thus reads as an I/O error, and stays.
// Temporary files are among the refused; this library keeps its own in memory.
//
// Time: statements are interrupted (SQLITE_INTERRUPT) once the allowed time is over; the time that
// SQLite sleeps, waiting for others' locks, does not count. SQLite looks at the clock at the jumps
// of its programs: what goes on between two of them, such as the check of the pages or a long
// expression, is not cut short.
class GuardedVfs : public sqlite3_vfs {
 public:
  // Opens or makes the database at a UTF-8 path, on top of the default VFS, with no time allowed.
  // The result belongs to the connection and ends with it. Null, and no connection, when SQLite
  // does not open the file. What `handle` held before is closed.
  static GuardedVfs* Open(const char* path, MonotonicClock clock, Connection& handle);

  // From now on so many milliseconds are allowed.
  void Allow(int64_t milliseconds) { deadline = clock() + milliseconds; }

 private:
  GuardedVfs(sqlite3_vfs* defaultVfs, MonotonicClock monotonicClock);

  static int OpenFile(sqlite3_vfs* vfs, const char* file, sqlite3_file* opened, int flags,
                      int* flagsThen);
  static int Sleep(sqlite3_vfs* vfs, int microseconds);
  // Whether a file is the database's journal or write-ahead log.
  bool IsSideFile(const char* file) const;

  sqlite3_vfs* const base;
  const MonotonicClock clock;
  const std::string name;
  int64_t deadline = 0;
  // SQLite's own names; they live as long as the open database.
  const char* journal = nullptr;
  const char* wal = nullptr;
};

}  // namespace ostrell
