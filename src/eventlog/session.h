#pragma once

#include <set>
#include <string>

#include "eventlog/apis.h"
#include "eventlog/filters.h"
#include "eventlog/reading.h"

namespace eventlog {

// A session with the event log service, which evaluates queries itself. Failures show as missing
// records and in the last error's text.
class EventLogSession {
 public:
  // `server` is empty for the local computer; another is connected to by remote procedure call.
  explicit EventLogSession(const std::wstring& server, const EvtApi& functions = LoadedEvtApi());

  // Gives `take` the records of a channel of this computer, oldest first, that a provider wrote
  // (any when empty) and `composite` lets pass. Filters that cannot be put into the query's text
  // test the records here. An event that cannot be rendered is skipped. A channel that this
  // computer does not have is empty without an error; a query whose text would not fit 4096
  // characters is not run. The time is looked at between two channels and between two batches of 64
  // events.
  //
  // A number in an event that does not convert throws (render_record.h); all handles are closed.
  ReadingEnd QueryEvents(const std::wstring& channel, const std::wstring& provider,
                         const CompositeFilter& composite, const TimeBudget& budget,
                         const RecordTaker& take);

  // The channels of this computer, asked anew at every call, up to the first failure, which a name
  // of 260 characters or more is, too, and up to the limits: only then `end` is set.
  std::set<std::wstring> EnumerateChannels(const TimeBudget& budget, ReadingEnd& end) const;

  bool IsOpen() const { return isOpen; }
  // The text of the last failure; a success leaves it.
  const std::wstring& LastError() const { return lastError; }

 private:
  void Fail(uint32_t code) { lastError = api.errorText(code); }

  EvtHandle session;  // empty for the local computer
  std::wstring lastError;
  bool isOpen = true;
  const EvtApi& api;
};

}  // namespace eventlog
