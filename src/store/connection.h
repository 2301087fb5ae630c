#pragma once

#include <sqlite3.h>

#include "base/owner.h"

namespace ostrell {

struct ConnectionTraits {
  using Handle = sqlite3*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle database) noexcept { sqlite3_close_v2(database); }
};
using Connection = Owner<ConnectionTraits>;

// A mutex that this thread has entered; it is left at the end.
struct MutexHoldTraits {
  using Handle = sqlite3_mutex*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle mutex) noexcept { sqlite3_mutex_leave(mutex); }
};
using MutexHold = Owner<MutexHoldTraits>;

// Keeps other threads off an open connection. The thread that holds it may hold it once more. The
// connection must live longer than the result.
inline MutexHold HoldMutex(sqlite3* db) {
  sqlite3_mutex* const mutex = sqlite3_db_mutex(db);
  sqlite3_mutex_enter(mutex);
  return MutexHold(mutex);
}

}  // namespace ostrell
