#pragma once

#include <sqlite3.h>

#include "base/owner.h"

namespace ostrell {

using Connection = ClosedBy<sqlite3*, &sqlite3_close_v2>;

// A mutex that this thread has entered; it is left at the end.
using MutexHold = ClosedBy<sqlite3_mutex*, &sqlite3_mutex_leave>;

// Keeps other threads off an open connection. The thread that holds it may hold it once more. The
// connection must live longer than the result.
inline MutexHold HoldMutex(sqlite3* db) {
  sqlite3_mutex* const mutex = sqlite3_db_mutex(db);
  sqlite3_mutex_enter(mutex);
  return MutexHold(mutex);
}

}  // namespace ostrell
