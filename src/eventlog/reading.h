#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <utility>

#include "eventlog/event_record.h"

namespace eventlog {

// What bounds the reading of one query, whatever the event log service answers.

inline constexpr std::chrono::seconds kReadingTime{300};
inline constexpr size_t kMaxChannels = 65536;  // listed by the service, each counted every time

// The time that one reading may take, from when it is made. The clock only has to go forward; each
// call of the service counts as a whole, however long it takes.
class TimeBudget {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  explicit TimeBudget(Clock clock = &std::chrono::steady_clock::now)
      : now(std::move(clock)), begin(now()) {}

  bool IsSpent() const { return now() - begin >= kReadingTime; }

 private:
  Clock now;
  std::chrono::steady_clock::time_point begin;
};

// Takes the records that pass, one by one. False ends the reading.
using RecordTaker = std::function<bool(EventRecord record)>;

// Why a reading ended. What was taken until then counts in any case.
enum class ReadingEnd {
  kComplete,  // no more records, or a failure, which the last error tells
  kStopped,   // by the taker
  kOutOfTime,
  kTooManyChannels,  // the channel was not among the first ones that were listed
};

}  // namespace eventlog
