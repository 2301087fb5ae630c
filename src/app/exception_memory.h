#pragma once

namespace ostrell {

// Makes ready what a throw needs when there is no memory left: the run-time library then takes the
// exception from a reserve, behind a lock that it would have to allocate at its first use; without
// memory that fails by an exception, and so on until the stack is full. Call it in the thread that
// is to throw, early.
void ReserveExceptionMemory();

}  // namespace ostrell
